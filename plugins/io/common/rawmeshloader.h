#pragma once

#include "plugins/io/common/fileloader.h"
#include "plugins/io/readers/rawmesh.h"

#include <QFile>

namespace qel {
namespace io {
namespace plugins {

// A loader whose reader parses the whole file into plain arrays first: Parser needs a
// constructor taking a ReadMonitor* and bool parse(QIODevice&, RawMesh&).
template <class Parser>
class RawMeshLoader : public FileLoader
{
protected:
    // Sets the parser up before it reads the file.
    virtual void configure(Parser&) {}

    bool readFile(QFile& file) override
    {
        readers::ReadMonitor monitor(file.size(), monitorCallback());
        Parser parser(&monitor);
        configure(parser);
        readers::RawMesh raw;
        const bool parsed = parser.parse(file, raw);
        logWarnings(parser.getWarnings());
        if (!parsed)
            return failParse(parser);
        return buildMesh(raw);
    }
};

} // namespace plugins
} // namespace io
} // namespace qel
