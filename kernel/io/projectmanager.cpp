#include "kernel/io/projectmanager.h"

#include <QMetaObject>
#include <algorithm>

namespace qel {
namespace io {

ProjectManager* ProjectManager::getInstance()
{
    static ProjectManager instance;
    return &instance;
}

void ProjectManager::addParticipant(ProjectParticipant* participant)
{
    if (std::find(participants.begin(), participants.end(), participant) == participants.end())
        participants.push_back(participant);
}

void ProjectManager::removeParticipant(ProjectParticipant* participant)
{
    participants.erase(std::remove(participants.begin(), participants.end(), participant),
                       participants.end());
}

// Scene events arrive on worker threads too: the flag and its signal live on the object's thread.
void ProjectManager::markModified()
{
    QMetaObject::invokeMethod(this, [this] { setModified(true); }, Qt::AutoConnection);
}

void ProjectManager::setModified(bool isNowModified)
{
    if (modified == isNowModified)
        return;
    modified = isNowModified;
    emit modifiedChanged(modified);
}

void ProjectManager::setCurrentFile(const QString& path)
{
    if (currentFile == path)
        return;
    currentFile = path;
    emit currentFileChanged(currentFile);
}

} // namespace io
} // namespace qel
