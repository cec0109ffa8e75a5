// Projects in the qel executable as users script them: saved, listed by tar, opened again
// by a second run and from the command line, and bad files refused with one message that
// names the file, stopping the script with a failing exit status.
#include "app/hostprocess.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <gtest/gtest.h>

using qel::test::HostRun;

namespace {

const QString Sample = QStringLiteral(QEL_SOURCE_DIR "/samples/sample.ply");

class ProjectEndToEnd : public ::testing::Test
{
protected:
    void SetUp() override { ASSERT_TRUE(dir.isValid()); }

    HostRun runScript(const QStringList& lines)
    {
        const QString script = qel::test::writeScript(dir.filePath(QStringLiteral("script.qel")), lines);
        return qel::test::runHost({QStringLiteral("--offscreen"), QStringLiteral("--run"), script});
    }

    // Runs the script and returns its scene dump, parsed.
    QJsonObject dumpAfter(const QStringList& lines)
    {
        const QString script = qel::test::writeScript(dir.filePath(QStringLiteral("dump.qel")), lines);
        const QString dumpFile = dir.filePath(QStringLiteral("scene.json"));
        QFile::remove(dumpFile);
        const HostRun run = qel::test::runHost(
            {QStringLiteral("--offscreen"), QStringLiteral("--run"), script, QStringLiteral("--dump-scene"), dumpFile});
        EXPECT_EQ(0, run.exitCode) << run.err.toStdString();
        QFile dump(dumpFile);
        if (!dump.open(QIODevice::ReadOnly))
            return QJsonObject();
        return QJsonDocument::fromJson(dump.readAll()).object();
    }

    QStringList listArchive(const QString& file)
    {
        QProcess tar;
        tar.start(QStringLiteral("/usr/bin/tar"), {QStringLiteral("-tf"), file});
        tar.waitForFinished(60000);
        EXPECT_EQ(0, tar.exitCode()) << tar.readAllStandardError().toStdString();
        return QString::fromUtf8(tar.readAllStandardOutput()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    }

    QTemporaryDir dir;
};

TEST_F(ProjectEndToEnd, ASavedProjectIsATarArchiveThatOpensAgain)
{
    const QString file = dir.filePath(QStringLiteral("work.qelproj"));
    const HostRun saving = runScript({QStringLiteral("loadmodel(%1,sample)").arg(Sample),
                                      QStringLiteral("saveproject(%1)").arg(file), QStringLiteral("saveproject")});
    ASSERT_EQ(0, saving.exitCode) << saving.err.toStdString();
    ASSERT_TRUE(QFile::exists(file));
    EXPECT_TRUE(listArchive(file).contains(QStringLiteral("project.xml")));
    // Nothing but the project is left in the folder.
    EXPECT_EQ(QStringList({"script.qel", "work.qelproj"}),
              QDir(dir.path()).entryList(QDir::Files | QDir::Hidden, QDir::Name));

    const HostRun opening = runScript({QStringLiteral("openproject(%1)").arg(file), QStringLiteral("newproject")});
    EXPECT_EQ(0, opening.exitCode) << opening.err.toStdString();

    const HostRun fromCommandLine = qel::test::runHost({QStringLiteral("--offscreen"), file});
    EXPECT_EQ(0, fromCommandLine.exitCode) << fromCommandLine.err.toStdString();
}

TEST_F(ProjectEndToEnd, BadProjectFilesStopTheScriptWithOneClearMessage)
{
    QFile text(dir.filePath(QStringLiteral("text.qelproj")));
    ASSERT_TRUE(text.open(QIODevice::WriteOnly));
    text.write(QByteArray("ply\nformat ascii 1.0\n").repeated(40));
    text.close();
    const struct
    {
        QString line;
        QString file;
        QString fault;
    } cases[] = {
        {QStringLiteral("openproject(%1)").arg(text.fileName()), text.fileName(), QStringLiteral("not a tar archive")},
        {QStringLiteral("openproject(%1)").arg(dir.filePath("missing.qelproj")), dir.filePath("missing.qelproj"),
         QStringLiteral("does not exist")},
        {QStringLiteral("saveproject(%1)").arg(dir.filePath("no/folder/x.qelproj")), dir.filePath("no/folder/x.qelproj"),
         QStringLiteral("does not exist")},
        {QStringLiteral("saveproject"), QString(), QStringLiteral("no file yet")},
    };
    for (const auto& entry : cases) {
        const HostRun result = runScript({entry.line, QStringLiteral("newproject")});
        EXPECT_NE(0, result.exitCode) << entry.line.toStdString();
        EXPECT_EQ(1, result.err.count(entry.fault)) << result.err.toStdString();
        EXPECT_TRUE(result.err.contains(entry.file)) << result.err.toStdString();
        EXPECT_TRUE(result.err.contains(QStringLiteral("script.qel:1"))) << result.err.toStdString();
    }
}


// Matrices are kept to single precision in a project: the dumps agree once every number is
// rounded to float.
QJsonValue toSinglePrecision(const QJsonValue& value)
{
    if (value.isDouble())
        return static_cast<double>(static_cast<float>(value.toDouble()));
    if (value.isArray()) {
        QJsonArray rounded;
        for (const QJsonValue& entry : value.toArray())
            rounded.append(toSinglePrecision(entry));
        return rounded;
    }
    if (value.isObject()) {
        QJsonObject rounded;
        const QJsonObject object = value.toObject();
        for (auto it = object.begin(); it != object.end(); ++it)
            rounded.insert(it.key(), toSinglePrecision(it.value()));
        return rounded;
    }
    return value;
}

TEST_F(ProjectEndToEnd, AnOpenedProjectGivesTheSceneThatWasSaved)
{
    const QString file = dir.filePath(QStringLiteral("scene.qelproj"));
    const QString wuson = QStringLiteral("/usr/share/assimp/models/PLY/Wuson.ply");
    const QJsonObject saved = dumpAfter({QStringLiteral("loadmodel(%1,0,inplace)").arg(Sample),
                                         QStringLiteral("loadmodel(%1,0,inplace)").arg(wuson),
                                         QStringLiteral("translate(Wuson,5,0,0,1)"),
                                         QStringLiteral("rotate(sample,1,0,0,-30,1,1)"),
                                         QStringLiteral("addclippingplane"),
                                         QStringLiteral("addselectionplane"),
                                         QStringLiteral("selectface(sample,[1,2,3,40],1)"),
                                         QStringLiteral("selectpoint(sample,[0,0,0],1)"),
                                         QStringLiteral("saveproject(%1)").arg(file)});
    ASSERT_FALSE(saved.isEmpty());
    ASSERT_EQ(6, saved.value("elements").toArray().size());
    EXPECT_EQ(1, saved.value("selectedPoints").toArray().size());
    const QJsonObject sample = saved.value("elements").toArray().at(2).toObject();
    EXPECT_EQ("sample", sample.value("name").toString());
    EXPECT_EQ(4, sample.value("selectedFaces").toInt());
    EXPECT_EQ(7680, sample.value("faces").toInt());
    EXPECT_EQ("#ffffff", sample.value("modelColor").toString());

    const QStringList entries = listArchive(file);
    EXPECT_TRUE(entries.contains(QStringLiteral("project.xml")));
    EXPECT_EQ(2, entries.filter(QRegularExpression("^models/[0-9a-f]{32}\\.qelmodel$")).size()) << entries.join(' ').toStdString();

    const QJsonObject opened = dumpAfter({QStringLiteral("openproject(%1)").arg(file)});
    EXPECT_EQ(toSinglePrecision(saved), toSinglePrecision(opened))
        << QJsonDocument(opened).toJson().toStdString();
}

} // namespace
