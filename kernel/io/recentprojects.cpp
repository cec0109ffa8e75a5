#include "kernel/io/recentprojects.h"

#include <QFileInfo>
#include <QSettings>

namespace qel {
namespace io {

const char* const RecentProjects::SettingsKey = "project/recentfiles";

RecentProjects::RecentProjects(QSettings* settings) : settings(settings)
{
}

QStringList RecentProjects::getFiles() const
{
    QStringList files = settings->value(SettingsKey).toStringList();
    files.removeAll(QString());
    return files.mid(0, MaximumFiles);
}

void RecentProjects::add(const QString& path)
{
    if (path.isEmpty())
        return;
    const QString file = QFileInfo(path).absoluteFilePath();
    QStringList files = getFiles();
    files.removeAll(file);
    files.prepend(file);
    store(files.mid(0, MaximumFiles));
}

void RecentProjects::remove(const QString& path)
{
    QStringList files = getFiles();
    files.removeAll(QFileInfo(path).absoluteFilePath());
    store(files);
}

void RecentProjects::store(const QStringList& files)
{
    settings->setValue(SettingsKey, files);
    settings->sync();
}

} // namespace io
} // namespace qel
