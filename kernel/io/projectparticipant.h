#pragma once

#include <QString>

class QXmlStreamReader;
class QXmlStreamWriter;

namespace qel {
namespace io {

class ZTarFile;

// A module's share of a project file: one section of "project.xml" and any archive entries
// of its own. The host owns the file and calls every registered participant in turn.
//
// Opening is two-phase so that a project that fails anywhere leaves the running state as it
// was: every participant first reads its section into a staged state, and only when all of
// them succeeded does the host commit them; otherwise it discards them.
class ProjectParticipant
{
public:
    virtual ~ProjectParticipant() = default;

    // Name of the XML element of this participant's section, unique among participants.
    virtual QString sectionName() const = 0;

    // Writes the section's content: the writer stands inside the section element. Binary
    // data goes into the archive. Long work polls abort and returns early when it is set.
    // Returns false, with one clear sentence in error, when the section can't be written.
    virtual bool save(QXmlStreamWriter* writer, ZTarFile* tar, const bool& abort, QString& error) = 0;

    // Reads the section into a staged state and touches nothing that is live. The reader
    // stands on the section's start element and is left on its end element. Returns false,
    // with one clear sentence in error (the host adds the file's name), when the section is
    // unusable; setting abort tells the host the user gave up.
    virtual bool load(QXmlStreamReader* reader, ZTarFile* tar, bool& abort, QString& error) = 0;

    // Replaces the live state by the staged one.
    virtual void commit() = 0;
    // Drops the staged state.
    virtual void discard() = 0;
    // Empties the live state: a new project, or a project without this participant's section.
    virtual void clear() = 0;
};

} // namespace io
} // namespace qel
