#include "kernel/io/zfile.h"
#include "kernel/io/ztarfile.h"
#include "support/logcapture.h"

#include <QBuffer>
#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>
#include <gtest/gtest.h>
#include <memory>

using qel::io::ZFile;
using qel::io::ZTarFile;

namespace {

const char* const TarTool = "/usr/bin/tar";

// Deeper than the 100 bytes of a header name, but splittable at a slash for the ustar prefix.
const QString SplittableName = QString("models/") + QString("d").repeated(60) + "/" + QString("f").repeated(90) + ".qelmodel";
// A single path part of 180 bytes: only a long-name record can hold it.
const QString UnsplittableName = QString("n").repeated(180) + ".bin";

QByteArray pattern(int size)
{
    QByteArray bytes(size, '\0');
    for (int index = 0; index < size; ++index)
        bytes[index] = char((index * 7 + 3) % 251);
    return bytes;
}

QString runTar(const QStringList& arguments, int* exitCode = nullptr)
{
    QProcess tar;
    tar.start(TarTool, arguments);
    tar.waitForFinished(60000);
    if (exitCode)
        *exitCode = tar.exitCode();
    return QString::fromUtf8(tar.readAllStandardOutput()) + QString::fromUtf8(tar.readAllStandardError());
}

QByteArray readMember(ZTarFile& archive, const QString& name)
{
    std::unique_ptr<ZFile> file(archive.getFile(name));
    if (!file || !file->open(QIODevice::ReadOnly))
        return QByteArray("<missing>");
    return file->readAll();
}

bool writeFile(const QString& path, const QByteArray& content)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(content) == content.size();
}

QByteArray readFile(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<missing>");
}

// Raises the abort flag once the copy has taken its first chunk.
class AbortingBuffer : public QBuffer
{
public:
    AbortingBuffer(QByteArray* data, bool* abort) : QBuffer(data), abort(abort) {}

protected:
    qint64 readData(char* data, qint64 maxSize) override
    {
        *abort = true;
        return QBuffer::readData(data, maxSize);
    }

private:
    bool* abort;
};

class TarTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(directory.isValid());
        ASSERT_TRUE(QFileInfo::exists(TarTool)) << "the tar tool is needed to check the format";
    }

    QString path(const QString& name) const { return directory.filePath(name); }

    QTemporaryDir directory;
};

} // namespace

TEST_F(TarTest, WrittenArchiveIsReadByTarAndByItself)
{
    const QByteArray big = pattern(200 * 1024 + 17); // several copy chunks, not a block multiple
    const QByteArray small = "<scene/>";
    const bool noAbort = false;
    {
        ZTarFile archive(path("project.tar"));
        ASSERT_TRUE(archive.open(QIODevice::WriteOnly));
        EXPECT_TRUE(archive.addData(small, "scene.xml"));
        QByteArray bigCopy = big;
        QBuffer device(&bigCopy); // not open: the archive opens and closes it
        EXPECT_TRUE(archive.addFile(&device, SplittableName, noAbort));
        EXPECT_FALSE(device.isOpen());
        EXPECT_TRUE(archive.addData(QByteArray(), "empty"));
        EXPECT_TRUE(archive.addData(small, UnsplittableName));
        archive.close();
    }

    int exitCode = -1;
    const QString listing = runTar({"-tf", path("project.tar")}, &exitCode);
    EXPECT_EQ(0, exitCode) << qPrintable(listing);
    EXPECT_EQ(QStringList({"scene.xml", SplittableName, "empty", UnsplittableName}),
              listing.split('\n', Qt::SkipEmptyParts));

    QDir().mkpath(path("out"));
    runTar({"-xf", path("project.tar"), "-C", path("out")}, &exitCode);
    EXPECT_EQ(0, exitCode);
    EXPECT_EQ(small, readFile(path("out/scene.xml")));
    EXPECT_EQ(big, readFile(path("out/" + SplittableName)));
    EXPECT_EQ(QByteArray(), readFile(path("out/empty")));
    EXPECT_EQ(small, readFile(path("out/" + UnsplittableName)));

    ZTarFile archive(path("project.tar"));
    ASSERT_TRUE(archive.open(QIODevice::ReadOnly));
    EXPECT_EQ(QStringList({"scene.xml", SplittableName, "empty", UnsplittableName}), archive.getFileNames());
    EXPECT_EQ(big, readMember(archive, SplittableName));
    EXPECT_EQ(small, readMember(archive, UnsplittableName));
    EXPECT_EQ(nullptr, archive.getFile("absent"));
}

TEST_F(TarTest, ArchivesOfTarAreReadInEveryFormat)
{
    const QByteArray big = pattern(70000);
    ASSERT_TRUE(writeFile(path("in/" + SplittableName), big));
    ASSERT_TRUE(writeFile(path("in/" + UnsplittableName), "long"));
    ASSERT_TRUE(writeFile(path("in/plain.txt"), "plain"));

    for (const QString& format : {QString("gnu"), QString("ustar"), QString("posix")}) {
        SCOPED_TRACE(format.toStdString());
        const QString archivePath = path(format + ".tar");
        // ustar can't hold a single name part of 180 bytes.
        QStringList members = {SplittableName, "plain.txt"};
        if (format != "ustar")
            members << UnsplittableName;
        int exitCode = -1;
        const QString output =
            runTar(QStringList({"--format=" + format, "-cf", archivePath, "-C", path("in")}) + members, &exitCode);
        ASSERT_EQ(0, exitCode) << qPrintable(output);

        ZTarFile archive(archivePath);
        ASSERT_TRUE(archive.open(QIODevice::ReadOnly));
        for (const QString& member : members)
            EXPECT_TRUE(archive.contains(member)) << qPrintable(member);
        EXPECT_EQ(big, readMember(archive, SplittableName));
        EXPECT_EQ(QByteArray("plain"), readMember(archive, "plain.txt"));
        if (format != "ustar") {
            EXPECT_EQ(QByteArray("long"), readMember(archive, UnsplittableName));
        }
    }
}

TEST_F(TarTest, AbortedMemberLeavesNothingBehind)
{
    ZTarFile archive(path("aborted.tar"));
    ASSERT_TRUE(archive.open(QIODevice::WriteOnly));
    ASSERT_TRUE(archive.addData("first", "first.txt"));

    // Aborted before the first chunk.
    QByteArray data = pattern(1000);
    QBuffer device(&data);
    const bool abortAtOnce = true;
    EXPECT_FALSE(archive.addFile(&device, "never.bin", abortAtOnce));

    // Aborted while copying: the header and the first chunk are already written.
    QByteArray large = pattern(300 * 1024);
    bool abort = false;
    AbortingBuffer aborting(&large, &abort);
    EXPECT_FALSE(archive.addFile(&aborting, UnsplittableName, abort));
    EXPECT_TRUE(abort);

    EXPECT_TRUE(archive.addData("last", "last.txt"));
    EXPECT_EQ(QStringList({"first.txt", "last.txt"}), archive.getFileNames());
    archive.close();

    int exitCode = -1;
    const QString listing = runTar({"-tf", path("aborted.tar")}, &exitCode);
    EXPECT_EQ(0, exitCode) << qPrintable(listing);
    EXPECT_EQ(QStringList({"first.txt", "last.txt"}), listing.split('\n', Qt::SkipEmptyParts));

    ZTarFile reread(path("aborted.tar"));
    ASSERT_TRUE(reread.open(QIODevice::ReadOnly));
    EXPECT_EQ(QByteArray("last"), readMember(reread, "last.txt"));
}

TEST_F(TarTest, AppendingKeepsTheMembersAndTarAgrees)
{
    {
        ZTarFile archive(path("grow.tar"));
        ASSERT_TRUE(archive.open(QIODevice::WriteOnly));
        archive.addData("one", "one.txt");
    }
    {
        ZTarFile archive(path("grow.tar"));
        ASSERT_TRUE(archive.open(QIODevice::ReadWrite));
        EXPECT_TRUE(archive.addData("two", "two.txt"));
        // A member added in this session can be read back at once.
        EXPECT_EQ(QByteArray("two"), readMember(archive, "two.txt"));
        EXPECT_EQ(QByteArray("one"), readMember(archive, "one.txt"));
    }
    int exitCode = -1;
    const QString listing = runTar({"-tf", path("grow.tar")}, &exitCode);
    EXPECT_EQ(0, exitCode) << qPrintable(listing);
    EXPECT_EQ(QStringList({"one.txt", "two.txt"}), listing.split('\n', Qt::SkipEmptyParts));
}

TEST_F(TarTest, BrokenArchivesAreRefusedWithAnError)
{
    {
        ZTarFile archive(path("good.tar"));
        ASSERT_TRUE(archive.open(QIODevice::WriteOnly));
        archive.addData(pattern(5000), "data.bin");
    }
    const QByteArray good = readFile(path("good.tar"));

    QByteArray corrupt = good;
    corrupt[10] = char(corrupt[10] ^ 0x55); // inside the name: the checksum no longer fits
    ASSERT_TRUE(writeFile(path("corrupt.tar"), corrupt));
    ASSERT_TRUE(writeFile(path("truncated.tar"), good.left(512 + 3000)));
    ASSERT_TRUE(writeFile(path("text.tar"), QByteArray("this is no archive\n").repeated(40)));
    ASSERT_TRUE(writeFile(path("halfheader.tar"), good.left(200)));

    const struct
    {
        const char* file;
        const char* message;
    } cases[] = {{"corrupt.tar", "bad header checksum"},
                 {"truncated.tar", "is truncated"},
                 {"text.tar", "bad header checksum"},
                 {"halfheader.tar", "truncated inside the header"}};
    for (const auto& broken : cases) {
        SCOPED_TRACE(broken.file);
        qel::test::LogCapture log;
        ZTarFile archive(path(broken.file));
        EXPECT_FALSE(archive.open(QIODevice::ReadOnly));
        EXPECT_FALSE(archive.isOpen());
        EXPECT_TRUE(archive.getFileNames().isEmpty());
        EXPECT_EQ(1, log.count(broken.message, 1000));
        EXPECT_TRUE(archive.errorString().contains(broken.message));
    }

    qel::test::LogCapture log;
    ZTarFile missing(path("missing.tar"));
    EXPECT_FALSE(missing.open(QIODevice::ReadOnly));
    EXPECT_EQ(1, log.count("Couldn't open archive", 1000));
    // The corrupt file is left as it was.
    EXPECT_EQ(corrupt, readFile(path("corrupt.tar")));
}

TEST_F(TarTest, MembersAreReadOnlyRandomAccessDevices)
{
    const QByteArray content = pattern(3000);
    ZTarFile archive(path("members.tar"));
    ASSERT_TRUE(archive.open(QIODevice::WriteOnly));
    qel::test::LogCapture log;
    EXPECT_EQ(nullptr, ZTarFile(path("other.tar")).getFile("x")); // not open: misuse
    EXPECT_EQ(1, log.count("isn't open", 0));
    archive.addData(content, "a.bin");
    archive.addData("second", "b.txt");
    archive.close();
    ASSERT_TRUE(archive.open(QIODevice::ReadOnly));
    EXPECT_FALSE(archive.addData("x", "c.txt"));
    EXPECT_EQ(1, log.count("isn't open for writing", 0));

    std::unique_ptr<ZFile> file(archive.getFile("a.bin"));
    ASSERT_TRUE(file);
    EXPECT_FALSE(file->open(QIODevice::WriteOnly));
    ASSERT_TRUE(file->open(QIODevice::ReadOnly));
    EXPECT_EQ(3000, file->size());
    EXPECT_FALSE(file->isSequential());
    EXPECT_TRUE(file->seek(2990));
    EXPECT_EQ(content.mid(2990), file->read(100)); // stops at the member's end
    EXPECT_TRUE(file->atEnd());
    EXPECT_TRUE(file->seek(5));
    EXPECT_EQ(content.mid(5, 10), file->read(10));
    // The member outlives the archive object.
    archive.close();
    EXPECT_TRUE(file->seek(0));
    EXPECT_EQ(content, file->readAll());
}
