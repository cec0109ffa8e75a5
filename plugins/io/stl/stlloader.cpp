#include "plugins/io/stl/stlloader.h"

#include "plugins/io/readers/cornermerger.h"
#include "plugins/io/readers/stlparser.h"

#include <QFile>

namespace qel {
namespace io {
namespace plugins {

namespace {

// Binary STL tells its triangle count up front: the mesh storage is made while the corners
// merge. A closed surface has about half as many vertices as triangles.
class PreparingMerger : public readers::CornerMerger
{
public:
    explicit PreparingMerger(StlLoader& loader) : loader(loader) {}

    void expect(std::size_t triangles) override
    {
        readers::CornerMerger::expect(triangles);
        loader.prepareStorage(triangles, triangles / 2);
    }

private:
    StlLoader& loader;
};

} // namespace

bool StlLoader::checkHead(const QByteArray& head) const
{
    return head.size() >= 84 || head.trimmed().startsWith("solid");
}

bool StlLoader::readFile(QFile& file)
{
    readers::ReadMonitor monitor(file.size(), monitorCallback());
    readers::StlParser parser(&monitor);
    PreparingMerger merger(*this);
    if (!parser.parse(file, merger))
        return failParse(parser);
    if (merger.isTooLarge())
        return fail(tr("the mesh is too large: %1 triangles").arg(parser.getTriangleCount()));
    setMergedWhileReading(merger.getMergedCount());
    readers::RawMesh raw;
    merger.takeMesh(raw);
    return buildMesh(raw);
}

} // namespace plugins
} // namespace io
} // namespace qel
