#pragma once

// Files for the load tests, written on the fly, and a fixture with the real import plug-ins.
#include "module_scene/io/importer.h"
#include "module_scene/io/loader.h"
#include "module_scene/meshmodel.h"
#include "support/logcapture.h"

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QtEndian>
#include <array>
#include <cstring>
#include <gtest/gtest.h>
#include <memory>
#include <utility>
#include <vector>

namespace qel {
namespace test {

typedef std::array<float, 9> StlTriangle;

inline QString pluginFolder()
{
    return QStringLiteral(QEL_BINARY_DIR "/plugins/io");
}

// The twelve triangles of an axis-aligned box, facing outwards, as STL repeats them.
inline std::vector<StlTriangle> boxTriangles(float x0, float y0, float z0, float x1, float y1, float z1)
{
    const float p[8][3] = {{x0, y0, z0}, {x1, y0, z0}, {x1, y1, z0}, {x0, y1, z0},
                           {x0, y0, z1}, {x1, y0, z1}, {x1, y1, z1}, {x0, y1, z1}};
    const int faces[12][3] = {{0, 2, 1}, {0, 3, 2}, {4, 5, 6}, {4, 6, 7}, {0, 1, 5}, {0, 5, 4},
                              {1, 2, 6}, {1, 6, 5}, {2, 3, 7}, {2, 7, 6}, {3, 0, 4}, {3, 4, 7}};
    std::vector<StlTriangle> triangles;
    for (const auto& face : faces) {
        StlTriangle triangle;
        for (int corner = 0; corner < 3; ++corner)
            std::memcpy(&triangle[3 * corner], p[face[corner]], sizeof p[0]);
        triangles.push_back(triangle);
    }
    return triangles;
}

// A binary STL; `announced` replaces the true triangle count in the header when >= 0.
inline QByteArray binaryStl(const std::vector<StlTriangle>& triangles, const QByteArray& header = "binary test",
                            long long announced = -1)
{
    QByteArray data = header.leftJustified(80, ' ', true);
    char count[4];
    qToLittleEndian<quint32>(static_cast<quint32>(announced >= 0 ? announced : static_cast<long long>(triangles.size())),
                             count);
    data.append(count, 4);
    for (const StlTriangle& triangle : triangles) {
        data.append(QByteArray(12, '\0'));
        for (float value : triangle) {
            char bytes[4];
            quint32 word;
            std::memcpy(&word, &value, 4);
            qToLittleEndian<quint32>(word, bytes);
            data.append(bytes, 4);
        }
        data.append(QByteArray(2, '\0'));
    }
    return data;
}

inline QByteArray asciiStl(const std::vector<StlTriangle>& triangles)
{
    QByteArray data = "solid test\n";
    for (const StlTriangle& t : triangles) {
        data += "  facet normal 0 0 0\n    outer loop\n";
        for (int corner = 0; corner < 3; ++corner)
            data += QStringLiteral("      vertex %1 %2 %3\n").arg(t[3 * corner]).arg(t[3 * corner + 1]).arg(t[3 * corner + 2]).toLatin1();
        data += "    endloop\n  endfacet\n";
    }
    data += "endsolid test\n";
    return data;
}

// The texts of the cleaning's log lines, in order.
inline std::vector<QString> pipelineLines(const LogCapture& log)
{
    std::vector<QString> lines;
    for (const log::LogRecord& record : log.records()) {
        if (record.level == 4000 && QString(record.function) == "qel::io::scene::Loader::processMesh")
            lines.push_back(record.text);
    }
    return lines;
}

// Loads files through the Importer with the project's plug-ins, recording the progress.
class LoadFixture : public ::testing::Test
{
protected:
    struct Result
    {
        std::unique_ptr<scene::MeshModel> model;
        QString error;
        std::vector<std::pair<int, QString>> progress;
        io::scene::Loader::Center center;
    };

    void SetUp() override
    {
        ASSERT_TRUE(QDir(pluginFolder()).exists()) << "build the target qel_io_plugins first";
        io::scene::Importer::getInstance()->refreshPlugins(pluginFolder());
        ASSERT_TRUE(folder.isValid());
    }

    void TearDown() override { io::scene::Importer::getInstance()->unloadPlugins(); }

    QString write(const QString& name, const QByteArray& contents)
    {
        const QString path = folder.filePath(name);
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(contents);
        return path;
    }

    Result load(const QString& path)
    {
        Result result;
        std::unique_ptr<io::scene::Loader> loader(io::scene::Importer::getInstance()->getLoader(path));
        EXPECT_TRUE(loader) << "no loader for " << qPrintable(path);
        if (!loader)
            return result;
        QObject::connect(loader.get(), &io::scene::Loader::progressChanged,
                         [&result](int percent, const QString& text) { result.progress.emplace_back(percent, text); });
        result.model.reset(loader->loadMesh(path));
        result.error = loader->getErrorMessage();
        result.center = loader->getPreSetCenter();
        return result;
    }

    QTemporaryDir folder;
};

} // namespace test
} // namespace qel
