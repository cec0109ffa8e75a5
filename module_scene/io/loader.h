#pragma once

#include "kernel/math/vector.h"

#include <QObject>
#include <QString>
#include <atomic>
#include <cstddef>

namespace qel {
namespace scene {
class MeshModel;
}
namespace io {
namespace scene {

// Base of the loaders of the import plug-ins. A plug-in's loader reads one file into a new
// MeshModel and hands it to processMesh, which cleans it the same way for every format:
// no duplicate or unreferenced vertices, compact storage, fresh normals and topology,
// centred on the origin with the former centre kept as the pre-set centre. Progress below
// 80 belongs to the plug-in's reading, 80 to 100 to processMesh.
//
// A loader serves one file. Failures are logged at level 1000 naming the file and the
// reason, which getErrorMessage() keeps for the caller.
class Loader : public QObject
{
    Q_OBJECT

public:
    typedef math::Vector<float, 3> Center;

    Loader();
    ~Loader() override;

    // A fast test of the file before the load.
    virtual bool checkFile(QString file) = 0;

    // Reads the file. On success the caller owns the mesh; on failure the result is null and
    // no mesh is left behind.
    qel::scene::MeshModel* loadMesh(QString file);
    // The box centre of the mesh as read, before processMesh moved it to the origin.
    Center getPreSetCenter();

    // Why the last load failed ("Could not load 'FILE': REASON"); empty after a success.
    const QString& getErrorMessage() const { return errorMessage; }
    bool isAborted() const { return aborted; }

public slots:
    virtual void abortLoading();

signals:
    void progressChanged(int percent, QString text);

protected:
    // Reads fileName, creates mesh, calls processMesh with the load mask of what the file
    // delivered; false when no mesh resulted (after fail(), which explains why).
    virtual bool loadMeshFile() = 0;
    // The cleaning pipeline; it runs to its end once started, whatever `aborted` says.
    virtual void processMesh(int mask);
    void dumpMask(int mask);

    // Logs "Could not load 'FILE': REASON" at level 1000 (an abort at 2000) and keeps it;
    // returns false for use in return statements.
    bool fail(const QString& reason);
    // Reading progress of the plug-in: a fraction of the file mapped below 80; false once the
    // load has been aborted.
    bool reportReading(qint64 done, qint64 total);
    // Vertices the plug-in merged into earlier ones before making the mesh. The log of the
    // cleaning counts them as it would have met them, among the vertices and then among the
    // duplicates, so that the same triangles tell the same in every format.
    void setMergedWhileReading(std::size_t vertices) { mergedWhileReading = vertices; }

    QString fileName;
    qel::scene::MeshModel* mesh;
    // Written by abortLoading from any thread, polled by the plug-in.
    std::atomic<bool> aborted;
    Center preSetCenter;

private:
    void logStep(long line, const QString& text);
    void step(int percent, const char* text);

    QString errorMessage;
    int lastReadingPercent;
    std::size_t mergedWhileReading;
};

} // namespace scene
} // namespace io
} // namespace qel
