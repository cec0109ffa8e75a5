#include "projectbenchmark.h"

#include "benchoptions.h"
#include "benchreport.h"
#include "kernel/io/projectfile.h"
#include "kernel/io/projectmanager.h"
#include "kernel/io/projectparticipant.h"
#include "kernel/io/zfile.h"
#include "kernel/io/ztarfile.h"

#include <QBuffer>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QXmlStreamReader>
#include <QXmlStreamWriter>
#include <chrono>
#include <cstdio>
#include <memory>
#include <unistd.h>

namespace {

const qint64 VertexRecord = 52;
const qint64 FaceRecord = 40;
const char* const EntryName = "models/bench.qelmodel";

// One model's bytes as the only content of a project.
class BytesParticipant : public qel::io::ProjectParticipant
{
public:
    explicit BytesParticipant(const QByteArray& bytes) : live(bytes) {}

    QString sectionName() const override { return QStringLiteral("bench"); }

    bool save(QXmlStreamWriter* writer, qel::io::ZTarFile* tar, const bool& abort, QString& error) override
    {
        writer->writeEmptyElement(QStringLiteral("entry"));
        writer->writeAttribute(QStringLiteral("name"), EntryName);
        QBuffer buffer(&live);
        if (tar->addFile(&buffer, EntryName, abort))
            return true;
        error = tar->errorString();
        return false;
    }

    bool load(QXmlStreamReader* reader, qel::io::ZTarFile* tar, bool&, QString& error) override
    {
        reader->skipCurrentElement();
        std::unique_ptr<qel::io::ZFile> entry(tar->getFile(EntryName));
        if (!entry || !entry->open(QIODevice::ReadOnly)) {
            error = QStringLiteral("the entry is missing");
            return false;
        }
        staged = entry->readAll();
        return true;
    }

    void commit() override
    {
        live.swap(staged);
        staged.clear();
    }
    void discard() override { staged.clear(); }
    void clear() override { live.clear(); }

    QByteArray live;
    QByteArray staged;
};

QByteArray modelBytes(long long triangles)
{
    const qint64 vertices = triangles / 2 + 2;
    QByteArray bytes(int(vertices * VertexRecord + triangles * FaceRecord), '\0');
    for (int index = 0; index < bytes.size(); ++index)
        bytes[index] = char((index * 131) >> 3);
    return bytes;
}

double writeFloor(const QString& path, const QByteArray& bytes)
{
    const auto start = std::chrono::steady_clock::now();
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate) || file.write(bytes) != bytes.size() || !file.flush()
        || ::fsync(file.handle()) != 0)
        return -1.0;
    file.close();
    return BenchOptions::secondsSince(start);
}

double readFloor(const QString& path, qint64 size)
{
    const auto start = std::chrono::steady_clock::now();
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly) || file.readAll().size() != size)
        return -1.0;
    return BenchOptions::secondsSince(start);
}

} // namespace

int runProjectBenchmark(int argc, char** argv)
{
    BenchOptions options({{"triangles", "2000000"}, {"dir", QDir::tempPath()}});
    if (!options.parse(argc, argv) || options.number("triangles") < 1) {
        std::fprintf(stderr, "usage: qel-bench project [--triangles N] [--dir FOLDER] [--json FILE]\n");
        return 2;
    }
    const long long triangles = options.number("triangles");
    const QDir folder(options.text("dir"));
    const QString project = folder.filePath(QStringLiteral("qel-bench.qelproj"));
    const QString floorFile = folder.filePath(QStringLiteral("qel-bench.floor"));

    qel::io::ProjectManager* manager = qel::io::ProjectManager::getInstance();
    BytesParticipant participant(modelBytes(triangles));
    const QByteArray original = participant.live;
    manager->addParticipant(&participant);
    qel::io::ProjectFile file(manager);
    bool abort = false;

    auto start = std::chrono::steady_clock::now();
    const bool saved = file.save(project, abort);
    const double saveSeconds = BenchOptions::secondsSince(start);
    const qint64 archiveBytes = QFileInfo(project).size();
    participant.clear();
    start = std::chrono::steady_clock::now();
    const bool opened = saved && file.open(project, abort);
    const double openSeconds = BenchOptions::secondsSince(start);
    manager->removeParticipant(&participant);
    if (!opened) {
        std::fprintf(stderr, "qel-bench project: %s\n", qPrintable(file.errorString()));
        return 1;
    }
    const bool identical = participant.live == original;

    const QByteArray floorBytes(int(archiveBytes), '\x5a');
    const double writeSeconds = writeFloor(floorFile, floorBytes);
    const double readSeconds = readFloor(floorFile, archiveBytes);
    QFile::remove(floorFile);
    QFile::remove(project);

    BenchReport report(QStringLiteral("project: the bytes of a %1-triangle model entry").arg(triangles));
    report.add("triangles", double(triangles));
    report.add("archive_bytes", double(archiveBytes), "B");
    report.add("save_s", saveSeconds, "s");
    report.add("write_floor_s", writeSeconds, "s");
    report.add("open_s", openSeconds, "s");
    report.add("read_floor_s", readSeconds, "s");
    report.add("identical", identical ? 1.0 : 0.0);
    report.print();
    if (!options.text("json").isEmpty() && !report.writeJson(options.text("json")))
        return 1;
    return identical && writeSeconds >= 0.0 && readSeconds >= 0.0 ? 0 : 1;
}
