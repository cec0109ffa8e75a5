#pragma once

#include <QString>
#include <QStringList>

class QSettings;

namespace qel {
namespace io {

// The project files used last, newest first, kept in the settings so that they outlive
// the session. A file that is no longer there stays listed until opening it fails.
class RecentProjects
{
public:
    static const int MaximumFiles = 8;
    static const char* const SettingsKey;

    // The settings stay the caller's.
    explicit RecentProjects(QSettings* settings);

    QStringList getFiles() const;
    // Puts the file first; a file listed already moves up, the oldest falls off.
    void add(const QString& path);
    void remove(const QString& path);

private:
    void store(const QStringList& files);

    QSettings* settings;
};

} // namespace io
} // namespace qel
