#include "kernel/fakeparticipant.h"
#include "kernel/io/projectfile.h"
#include "kernel/io/projectmanager.h"
#include "kernel/io/projectparticipant.h"
#include "kernel/io/recentprojects.h"
#include "kernel/io/zfile.h"
#include "kernel/io/ztarfile.h"
#include "support/logcapture.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QSettings>
#include <QTemporaryDir>
#include <QXmlStreamReader>
#include <QXmlStreamWriter>
#include <gtest/gtest.h>
#include <memory>
#include <unistd.h>

using qel::io::ProjectFile;
using qel::io::ProjectManager;
using qel::io::ProjectParticipant;
using qel::io::RecentProjects;
using qel::io::ZTarFile;
using qel::test::FakeParticipant;

namespace {

QString listArchive(const QString& path, int* exitCode)
{
    QProcess tar;
    tar.start(QStringLiteral("/usr/bin/tar"), {QStringLiteral("-tf"), path});
    tar.waitForFinished(60000);
    *exitCode = tar.exitCode();
    return QString::fromUtf8(tar.readAllStandardOutput());
}

QByteArray readFile(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<missing>");
}

bool writeFile(const QString& path, const QByteArray& content)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly | QIODevice::Truncate) && file.write(content) == content.size();
}

bool writeArchive(const QString& path, const std::vector<std::pair<QString, QByteArray>>& entries)
{
    ZTarFile tar(path);
    if (!tar.open(QIODevice::WriteOnly))
        return false;
    for (const auto& entry : entries) {
        if (!tar.addData(entry.second, entry.first))
            return false;
    }
    return tar.closeAndSync();
}

class ProjectFileTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(folder.isValid());
        manager->setCurrentFile(QString());
        manager->setModified(false);
        scene.live = QStringLiteral("two models");
        views.live = QStringLiteral("one camera");
        manager->addParticipant(&scene);
        manager->addParticipant(&views);
    }
    void TearDown() override
    {
        manager->removeParticipant(&scene);
        manager->removeParticipant(&views);
        manager->setCurrentFile(QString());
        manager->setModified(false);
    }

    QString path(const QString& name) const { return folder.filePath(name); }

    // Saves the live state to the path and fails the test if that didn't work.
    void saveTo(const QString& file)
    {
        ProjectFile project(manager);
        const bool noAbort = false;
        ASSERT_TRUE(project.save(file, noAbort)) << qPrintable(project.errorString());
    }

    QStringList folderEntries() const
    {
        return QDir(folder.path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
    }

    // Opening must fail with one sentence that names the file and the fault, and leave
    // every participant's live state and the project as they were.
    void expectRefused(const QString& file, const QString& fault)
    {
        scene.live = QStringLiteral("live scene");
        views.live = QStringLiteral("live views");
        manager->setCurrentFile(QStringLiteral("/before.qelproj"));
        manager->setModified(true);
        const int commitsBefore = scene.commits + views.commits;
        const int clearsBefore = scene.clears + views.clears;
        qel::test::LogCapture log;
        ProjectFile project(manager);
        bool abort = false;
        EXPECT_FALSE(project.open(file, abort)) << qPrintable(fault);
        EXPECT_FALSE(project.wasAborted());
        EXPECT_TRUE(project.errorString().contains(file)) << qPrintable(project.errorString());
        EXPECT_TRUE(project.errorString().contains(fault)) << qPrintable(project.errorString());
        EXPECT_EQ(1, project.errorString().count(QStringLiteral("Can't open project")));
        // The caller reports the message: nothing else shows as an error.
        EXPECT_EQ(0, log.count(QString(), 1000));
        EXPECT_EQ(QStringLiteral("live scene"), scene.live);
        EXPECT_EQ(QStringLiteral("live views"), views.live);
        EXPECT_FALSE(scene.hasStaged);
        EXPECT_FALSE(views.hasStaged);
        EXPECT_EQ(commitsBefore, scene.commits + views.commits);
        EXPECT_EQ(clearsBefore, scene.clears + views.clears);
        EXPECT_EQ(QStringLiteral("/before.qelproj"), manager->getCurrentFile());
        EXPECT_TRUE(manager->isModified());
    }

    ProjectManager* manager = ProjectManager::getInstance();
    QTemporaryDir folder;
    FakeParticipant scene{QStringLiteral("scene")};
    FakeParticipant views{QStringLiteral("views")};
};

TEST_F(ProjectFileTest, RoundTripsEveryParticipantThroughOneTarArchive)
{
    const QString file = path(QStringLiteral("work.qelproj"));
    manager->setModified(true);
    saveTo(file);
    EXPECT_EQ(file, manager->getCurrentFile());
    EXPECT_FALSE(manager->isModified());

    int exitCode = -1;
    const QStringList listed = listArchive(file, &exitCode).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    EXPECT_EQ(0, exitCode);
    EXPECT_EQ(QStringList({"fake/scene.bin", "fake/views.bin", "project.xml"}), listed);

    ZTarFile tar(file);
    ASSERT_TRUE(tar.open(QIODevice::ReadOnly));
    std::unique_ptr<qel::io::ZFile> entry(tar.getFile(QStringLiteral("project.xml")));
    ASSERT_TRUE(entry && entry->open(QIODevice::ReadOnly));
    QXmlStreamReader xml(entry->readAll());
    ASSERT_TRUE(xml.readNextStartElement());
    EXPECT_EQ(QStringLiteral("project"), xml.name().toString());
    EXPECT_EQ(QStringLiteral("1"), xml.attributes().value(QStringLiteral("version")).toString());
    QStringList sections;
    while (xml.readNextStartElement()) {
        sections << xml.name().toString();
        xml.skipCurrentElement();
    }
    EXPECT_FALSE(xml.hasError());
    EXPECT_EQ(QStringList({"scene", "views"}), sections);

    scene.live = QStringLiteral("changed");
    views.live.clear();
    manager->setCurrentFile(QString());
    manager->setModified(true);
    ProjectFile project(manager);
    bool abort = false;
    ASSERT_TRUE(project.open(file, abort)) << qPrintable(project.errorString());
    EXPECT_EQ(QStringLiteral("two models"), scene.live);
    EXPECT_EQ(QStringLiteral("one camera"), views.live);
    EXPECT_EQ(file, manager->getCurrentFile());
    EXPECT_FALSE(manager->isModified());
}

TEST_F(ProjectFileTest, ReportsProgressUpToTheEnd)
{
    ProjectFile project(manager);
    std::vector<int> percents;
    project.setProgressFunction([&percents](int percent, const QString&) { percents.push_back(percent); });
    const bool noAbort = false;
    ASSERT_TRUE(project.save(path(QStringLiteral("p.qelproj")), noAbort));
    ASSERT_FALSE(percents.empty());
    EXPECT_TRUE(std::is_sorted(percents.begin(), percents.end()));
    EXPECT_EQ(100, percents.back());
}

TEST_F(ProjectFileTest, OpeningRefusesBadFilesAndLeavesTheLiveStateAlone)
{
    const QString good = path(QStringLiteral("good.qelproj"));
    saveTo(good);
    const QByteArray goodBytes = readFile(good);

    const QString text = path(QStringLiteral("text.qelproj"));
    ASSERT_TRUE(writeFile(text, QByteArray("solid cube\nendsolid cube\n").repeated(40)));
    expectRefused(text, QStringLiteral("not a tar archive"));

    const QString empty = path(QStringLiteral("empty.qelproj"));
    ASSERT_TRUE(writeFile(empty, QByteArray()));
    expectRefused(empty, QStringLiteral("not a tar archive"));

    const QString truncated = path(QStringLiteral("truncated.qelproj"));
    ASSERT_TRUE(writeFile(truncated, goodBytes.left(700)));
    expectRefused(truncated, QStringLiteral("truncated"));

    const QString withoutXml = path(QStringLiteral("noxml.qelproj"));
    ASSERT_TRUE(writeArchive(withoutXml, {{QStringLiteral("fake/scene.bin"), QByteArray("two models")}}));
    expectRefused(withoutXml, QStringLiteral("no \"project.xml\""));

    const QString malformed = path(QStringLiteral("malformed.qelproj"));
    ASSERT_TRUE(writeArchive(malformed, {{QStringLiteral("project.xml"),
                                          QByteArray("<project version=\"1\"><scene><value>x</valu></scene>")}}));
    expectRefused(malformed, QStringLiteral("malformed at line 1"));

    const QString trailing = path(QStringLiteral("trailing.qelproj"));
    ASSERT_TRUE(writeArchive(trailing, {{QStringLiteral("project.xml"), QByteArray("<project version=\"1\"></project><x")}}));
    expectRefused(trailing, QStringLiteral("malformed"));

    const QString foreign = path(QStringLiteral("foreign.qelproj"));
    ASSERT_TRUE(writeArchive(foreign, {{QStringLiteral("project.xml"), QByteArray("<scene/>")}}));
    expectRefused(foreign, QStringLiteral("not a project"));

    const QString newer = path(QStringLiteral("newer.qelproj"));
    ASSERT_TRUE(writeArchive(newer, {{QStringLiteral("project.xml"), QByteArray("<project version=\"7\"/>")}}));
    expectRefused(newer, QStringLiteral("version '7' is not supported"));

    expectRefused(path(QStringLiteral("missing.qelproj")), QStringLiteral("does not exist"));
    expectRefused(folder.path(), QStringLiteral("is a folder"));
    if (::geteuid() != 0) {
        const QString locked = path(QStringLiteral("locked.qelproj"));
        ASSERT_TRUE(QFile::copy(good, locked));
        ASSERT_TRUE(QFile::setPermissions(locked, QFileDevice::WriteOwner));
        expectRefused(locked, QStringLiteral("Permission denied"));
    }
}

TEST_F(ProjectFileTest, ASectionThatIsRefusedDiscardsEveryStagedSection)
{
    const QString file = path(QStringLiteral("refused.qelproj"));
    ASSERT_TRUE(writeArchive(file, {{QStringLiteral("fake/scene.bin"), QByteArray("x")},
                                    {QStringLiteral("project.xml"),
                                     QByteArray("<project version=\"1\"><scene><value>x</value></scene>"
                                                "<views><camera/></views></project>")}}));
    expectRefused(file, QStringLiteral("the views holds no value"));
    EXPECT_EQ(1, scene.loads);
    EXPECT_EQ(1, scene.discards);
    EXPECT_EQ(1, views.discards);
    EXPECT_EQ(0, scene.commits + views.commits);

    const QString twice = path(QStringLiteral("twice.qelproj"));
    ASSERT_TRUE(writeArchive(twice, {{QStringLiteral("fake/scene.bin"), QByteArray("x")},
                                     {QStringLiteral("project.xml"),
                                      QByteArray("<project version=\"1\"><scene><value>x</value></scene>"
                                                 "<scene><value>x</value></scene></project>")}}));
    expectRefused(twice, QStringLiteral("<scene> appears twice"));
}

TEST_F(ProjectFileTest, UnknownSectionsAreSkippedAndMissingOnesCleared)
{
    const QString file = path(QStringLiteral("partial.qelproj"));
    ASSERT_TRUE(writeArchive(file, {{QStringLiteral("fake/scene.bin"), QByteArray("kept")},
                                    {QStringLiteral("project.xml"),
                                     QByteArray("<project version=\"1\"><history><step n=\"1\"/></history>"
                                                "<scene><value>kept</value></scene></project>")}}));
    qel::test::LogCapture log;
    ProjectFile project(manager);
    bool abort = false;
    ASSERT_TRUE(project.open(file, abort)) << qPrintable(project.errorString());
    EXPECT_EQ(1, log.count(QStringLiteral("unknown section <history> is skipped"), 2000));
    EXPECT_EQ(1, int(project.getWarnings().size()));
    EXPECT_EQ(QStringLiteral("kept"), scene.live);
    EXPECT_EQ(1, scene.commits);
    EXPECT_EQ(0, views.commits);
    EXPECT_EQ(1, views.clears);
    EXPECT_TRUE(views.live.isEmpty());
}

TEST_F(ProjectFileTest, AnAbortedOpenLeavesTheLiveStateAlone)
{
    const QString file = path(QStringLiteral("work.qelproj"));
    saveTo(file);
    views.abortLoad = true;
    scene.live = QStringLiteral("live");
    ProjectFile project(manager);
    bool abort = false;
    EXPECT_FALSE(project.open(file, abort));
    EXPECT_TRUE(project.wasAborted());
    EXPECT_TRUE(project.errorString().contains(QStringLiteral("aborted")));
    EXPECT_EQ(QStringLiteral("live"), scene.live);
    EXPECT_EQ(1, scene.discards);
    EXPECT_EQ(0, scene.commits);
}

TEST_F(ProjectFileTest, AFailedOrAbortedSaveKeepsTheOldFileAndLeavesNothingBehind)
{
    const QString file = path(QStringLiteral("work.qelproj"));
    saveTo(file);
    const QByteArray before = readFile(file);
    manager->setModified(true);

    views.failSave = true;
    ProjectFile failing(manager);
    const bool noAbort = false;
    EXPECT_FALSE(failing.save(file, noAbort));
    EXPECT_TRUE(failing.errorString().contains(file));
    EXPECT_TRUE(failing.errorString().contains(QStringLiteral("the views can't be written")));
    EXPECT_EQ(before, readFile(file));
    EXPECT_EQ(QStringList({"work.qelproj"}), folderEntries());
    EXPECT_TRUE(manager->isModified());

    views.failSave = false;
    bool abort = false;
    scene.raiseAbort = &abort;
    ProjectFile aborting(manager);
    EXPECT_FALSE(aborting.save(file, abort));
    EXPECT_TRUE(aborting.wasAborted());
    EXPECT_EQ(before, readFile(file));
    EXPECT_EQ(QStringList({"work.qelproj"}), folderEntries());
}

TEST_F(ProjectFileTest, SavingRefusesPathsThatCantBeWritten)
{
    ProjectFile project(manager);
    const bool noAbort = false;
    const QString nowhere = path(QStringLiteral("no/such/folder/work.qelproj"));
    EXPECT_FALSE(project.save(nowhere, noAbort));
    EXPECT_TRUE(project.errorString().contains(nowhere));
    EXPECT_TRUE(project.errorString().contains(QStringLiteral("does not exist")));

    EXPECT_FALSE(project.save(folder.path(), noAbort));
    EXPECT_TRUE(project.errorString().contains(QStringLiteral("is a folder")));

    EXPECT_FALSE(project.save(QString(), noAbort));
    EXPECT_TRUE(project.errorString().contains(QStringLiteral("no file given")));

    if (::geteuid() != 0) {
        const QString locked = path(QStringLiteral("locked"));
        ASSERT_TRUE(QDir().mkdir(locked));
        ASSERT_TRUE(QFile::setPermissions(locked, QFileDevice::ReadOwner | QFileDevice::ExeOwner));
        EXPECT_FALSE(project.save(locked + QStringLiteral("/work.qelproj"), noAbort));
        EXPECT_TRUE(project.errorString().contains(QStringLiteral("can't write in the folder")));
        QFile::setPermissions(locked, QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
    }
    EXPECT_TRUE(manager->getCurrentFile().isEmpty());
}

TEST_F(ProjectFileTest, ANewProjectClearsEveryParticipant)
{
    manager->setCurrentFile(QStringLiteral("/some.qelproj"));
    manager->setModified(true);
    ProjectFile(manager).clear();
    EXPECT_TRUE(scene.live.isEmpty());
    EXPECT_TRUE(views.live.isEmpty());
    EXPECT_TRUE(manager->getCurrentFile().isEmpty());
    EXPECT_FALSE(manager->isModified());
}

TEST(RecentProjects, KeepsTheLastEightNewestFirst)
{
    QTemporaryDir folder;
    QSettings settings(folder.filePath(QStringLiteral("settings.ini")), QSettings::IniFormat);
    RecentProjects recent(&settings);
    EXPECT_TRUE(recent.getFiles().isEmpty());
    for (int index = 0; index < 10; ++index)
        recent.add(QStringLiteral("/p/%1.qelproj").arg(index));
    QStringList files = recent.getFiles();
    ASSERT_EQ(8, files.size());
    EXPECT_EQ(QStringLiteral("/p/9.qelproj"), files.first());
    EXPECT_EQ(QStringLiteral("/p/2.qelproj"), files.last());

    recent.add(QStringLiteral("/p/5.qelproj"));
    files = recent.getFiles();
    EXPECT_EQ(8, files.size());
    EXPECT_EQ(QStringLiteral("/p/5.qelproj"), files.first());
    EXPECT_EQ(1, files.count(QStringLiteral("/p/5.qelproj")));

    recent.remove(QStringLiteral("/p/9.qelproj"));
    EXPECT_FALSE(recent.getFiles().contains(QStringLiteral("/p/9.qelproj")));
    EXPECT_EQ(files.mid(0, 1) + files.mid(2), RecentProjects(&settings).getFiles());
}

} // namespace
