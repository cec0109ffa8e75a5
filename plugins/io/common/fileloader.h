#pragma once

#include "module_scene/io/importer.h"
#include "module_scene/io/loader.h"
#include "plugins/io/common/preparedstorage.h"
#include "plugins/io/readers/readmonitor.h"

#include <cstddef>

class QFile;

namespace qel {
namespace io {
namespace readers {
class MeshParser;
class ReadWarnings;
struct RawMesh;
} // namespace readers

namespace plugins {

// Base of the project's own loaders: opens the file with clear messages for the usual
// failures, hands the open file to readFile, and turns what a reader produced into a
// cleaned MeshModel. Reading progress goes below 80 and polls the abort flag. A mesh is
// created only once the file has been read in full, so a failed load never has one to
// delete (which would take a trip to the application thread).
class FileLoader : public scene::Loader
{
    Q_OBJECT

public:
    // The factory of a loader class, and its registration for a file extension.
    template <class Derived>
    static scene::Loader* create()
    {
        return new Derived;
    }
    template <class Derived>
    static bool registerFor(const QString& extension, const QString& description)
    {
        return scene::Importer::getInstance()->registerLoader(&create<Derived>, extension, description);
    }

    // The file exists, is a readable file and not empty, and its first bytes pass checkHead.
    bool checkFile(QString file) override;

protected:
    bool loadMeshFile() override;
    // Reads the open file; true once `mesh` holds the cleaned mesh.
    virtual bool readFile(QFile& file) = 0;
    // Whether the first bytes of a file could belong to this format.
    virtual bool checkHead(const QByteArray& head) const;

    readers::ReadMonitor::Callback monitorCallback();
    // Fails with the parser's reason, or as aborted when the monitor stopped it.
    bool failParse(const readers::MeshParser& parser);
    // Logs each warning of the reader at level 2000, naming the file.
    void logWarnings(const readers::ReadWarnings& warnings) const;
    // Creates the mesh from the arrays, which are emptied on the way to spare memory. An
    // abort up to here fails the load; no mesh is made then.
    bool buildMesh(readers::RawMesh& raw);
    // Starts making the storage of a mesh of that many faces and about that many vertices
    // on another core while the file is still being read; buildMesh takes what fits.
    void prepareStorage(std::size_t faces, std::size_t vertices);
    // The steps after the mesh is filled: processMesh, the adjacency bits it built, busy
    // cleared. The cleaning runs to its end even if the load is aborted meanwhile.
    bool finishMesh(int mask);

private:
    // Fill the mesh from the arrays, which are emptied on the way.
    void fillVertices(qel::scene::CMeshO& mesh, readers::RawMesh& raw);
    void fillFaces(qel::scene::CMeshO& mesh, readers::RawMesh& raw);

    PreparedStorage prepared;
};

} // namespace plugins
} // namespace io
} // namespace qel
