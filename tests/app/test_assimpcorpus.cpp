// Every file of the public assimp model corpus loaded by the qel executable, one child
// process a file, two at a time: each must end as a model in the scene or as a refusal that
// names the file and says why; a crash, a hang or a silent refusal fails the test. The run
// takes minutes, so the test is disabled in the suite and has a ctest entry of its own
// (assimp_corpus) that runs it with a long time limit. The results go to the test output
// and to assimp-corpus-results.txt beside the binaries.
#include "app/hostprocess.h"

#include <QDir>
#include <QDirIterator>
#include <QElapsedTimer>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <atomic>
#include <gtest/gtest.h>
#include <map>
#include <thread>
#include <vector>

namespace {

const char* const CORPUS = "/usr/share/assimp/models";
// Generous: the biggest files take seconds alone and far longer on a loaded machine.
const int FILE_LIMIT_MS = 60000;
const int PARALLEL_RUNS = 2;

enum class Outcome { Loaded, Refused, Silent, Crashed, Hung };

const char* outcomeName(Outcome outcome)
{
    switch (outcome) {
    case Outcome::Loaded:
        return "loaded";
    case Outcome::Refused:
        return "refused";
    case Outcome::Silent:
        return "SILENT";
    case Outcome::Crashed:
        return "CRASHED";
    case Outcome::Hung:
        return "HUNG";
    }
    return "?";
}

struct FileResult
{
    QString file;
    Outcome outcome = Outcome::Silent;
    QString detail;
    qint64 milliseconds = 0;
};

bool sceneHasModel(const QString& dump)
{
    QFile file(dump);
    if (!file.open(QIODevice::ReadOnly))
        return false;
    for (const QJsonValue& element : QJsonDocument::fromJson(file.readAll()).object()["elements"].toArray()) {
        if (element.toObject()["type"].toString() == "SceneVCGModel")
            return true;
    }
    return false;
}

// The reason of the error line (level 2000 or more severe) that names the file; empty if none.
QString refusalReason(const QString& err, const QString& file)
{
    const QString named = "'" + file + "'";
    static const QRegularExpression errorLevel(QStringLiteral("^\\[(\\d+)\\]"));
    for (const QString& line : err.split('\n')) {
        const QRegularExpressionMatch level = errorLevel.match(line);
        const int at = line.indexOf(named);
        if (level.hasMatch() && level.captured(1).toInt() <= 2000 && at >= 0) {
            const QString reason = line.mid(at + named.size()).trimmed();
            return reason.startsWith(':') ? reason.mid(1).trimmed() : reason;
        }
    }
    return QString();
}

QString lastLines(const QString& text, int count)
{
    const QStringList lines = text.trimmed().split('\n');
    return lines.mid(std::max(0, static_cast<int>(lines.size()) - count)).join(" | ");
}

FileResult loadInChild(const QString& file, const QString& workFolder)
{
    FileResult result;
    result.file = file;
    const QString script = qel::test::writeScript(workFolder + "/load.qel", {"loadmodel(" + file + ",corpus)"});
    const QString dump = workFolder + "/scene.json";
    QFile::remove(dump);
    QProcess process;
    QElapsedTimer clock;
    clock.start();
    process.start(QStringLiteral(QEL_EXECUTABLE),
                  {"--offscreen", "--run", script, "--dump-scene", dump, "--log-level", "2000"});
    const bool finished = process.waitForFinished(FILE_LIMIT_MS);
    result.milliseconds = clock.elapsed();
    if (!finished) {
        process.kill();
        process.waitForFinished();
        result.outcome = Outcome::Hung;
        result.detail = QStringLiteral("no end after %1 s").arg(FILE_LIMIT_MS / 1000);
        return result;
    }
    const QString err = QString::fromLocal8Bit(process.readAllStandardError());
    if (process.exitStatus() != QProcess::NormalExit || process.exitCode() != 0) {
        result.outcome = Outcome::Crashed;
        result.detail = QStringLiteral("exit status %1, code %2: %3")
                            .arg(process.exitStatus())
                            .arg(process.exitCode())
                            .arg(lastLines(err, 3));
        return result;
    }
    if (sceneHasModel(dump)) {
        result.outcome = Outcome::Loaded;
        return result;
    }
    result.detail = refusalReason(err, file);
    result.outcome = result.detail.isEmpty() ? Outcome::Silent : Outcome::Refused;
    if (result.detail.isEmpty())
        result.detail = lastLines(err, 3);
    return result;
}

// Reasons alike but for numbers and names fall into one group.
QString reasonGroup(const QString& reason)
{
    QString group = reason;
    group.replace(QRegularExpression(QStringLiteral("'[^']*'")), QStringLiteral("'…'"));
    group.replace(QRegularExpression(QStringLiteral("(?<=[ (\"])/[^ :)\"]+")), QStringLiteral("…"));
    group.replace(QRegularExpression(QStringLiteral("\\d+")), QStringLiteral("N"));
    return group.left(110);
}

QStringList corpusFiles()
{
    QStringList files;
    QDirIterator walk(QString::fromLatin1(CORPUS), QDir::Files | QDir::NoSymLinks, QDirIterator::Subdirectories);
    while (walk.hasNext())
        files << walk.next();
    files.sort();
    return files;
}

std::vector<FileResult> loadAll(const QStringList& files, const QTemporaryDir& work)
{
    std::vector<FileResult> results(static_cast<std::size_t>(files.size()));
    std::atomic<int> next(0);
    auto worker = [&](int number) {
        const QString folder = work.filePath(QString::number(number));
        QDir().mkpath(folder);
        for (int index = next++; index < files.size(); index = next++)
            results[static_cast<std::size_t>(index)] = loadInChild(files[index], folder);
    };
    std::vector<std::thread> workers;
    for (int number = 0; number < PARALLEL_RUNS; ++number)
        workers.emplace_back(worker, number);
    for (std::thread& thread : workers)
        thread.join();
    return results;
}

QString report(const std::vector<FileResult>& results)
{
    QString text;
    std::map<Outcome, int> counts;
    std::map<QString, int> reasons;
    for (const FileResult& result : results) {
        ++counts[result.outcome];
        if (result.outcome == Outcome::Refused)
            ++reasons[reasonGroup(result.detail)];
        text += QStringLiteral("%1\t%2\t%3 ms\t%4\n")
                    .arg(QString::fromLatin1(outcomeName(result.outcome)), result.file)
                    .arg(result.milliseconds)
                    .arg(result.detail);
    }
    text += QStringLiteral("\n%1 files: %2 loaded, %3 refused with a reason, %4 crashed, %5 hung, %6 refused in silence\n")
                .arg(results.size())
                .arg(counts[Outcome::Loaded])
                .arg(counts[Outcome::Refused])
                .arg(counts[Outcome::Crashed])
                .arg(counts[Outcome::Hung])
                .arg(counts[Outcome::Silent]);
    text += QStringLiteral("Reasons of the refusals:\n");
    for (const auto& reason : reasons)
        text += QStringLiteral("%1\t%2\n").arg(reason.second, 4).arg(reason.first);
    return text;
}

} // namespace

TEST(AssimpCorpus, DISABLED_EveryFileLoadsOrIsRefusedWithAReason)
{
    ASSERT_TRUE(QDir(QString::fromLatin1(CORPUS)).exists())
        << CORPUS << " is missing: install the package assimp-testmodels (tools/setup.sh does)";
    const QStringList files = corpusFiles();
    ASSERT_FALSE(files.isEmpty()) << CORPUS << " holds no file";
    QTemporaryDir work;
    ASSERT_TRUE(work.isValid());

    const std::vector<FileResult> results = loadAll(files, work);
    const QString table = report(results);
    std::printf("%s", table.toLocal8Bit().constData());
    QFile saved(QStringLiteral(QEL_BINARY_DIR "/assimp-corpus-results.txt"));
    if (saved.open(QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::Text))
        saved.write(table.toUtf8());

    for (const FileResult& result : results) {
        EXPECT_TRUE(result.outcome == Outcome::Loaded || result.outcome == Outcome::Refused)
            << outcomeName(result.outcome) << ": " << result.file.toStdString() << ": " << result.detail.toStdString();
    }
}
