// The scene dump of the qel executable after a script, as users who script it read it.
#include "app/hostprocess.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace {

struct ScriptRun
{
    int exitCode = -1;
    QString err;
    QByteArray dump;
};

// Runs the script's lines with --dump-scene and reads the dump back.
ScriptRun runScript(const QStringList& lines, const QStringList& extraArguments = {})
{
    QTemporaryDir dir;
    const QString script = qel::test::writeScript(dir.filePath("script.qel"), lines);
    const QString dumpFile = dir.filePath("scene.json");
    const qel::test::HostRun host =
        qel::test::runHost(QStringList{"--offscreen", "--run", script, "--dump-scene", dumpFile} + extraArguments);
    ScriptRun run;
    run.exitCode = host.exitCode;
    run.err = host.err;
    QFile dump(dumpFile);
    if (dump.open(QIODevice::ReadOnly))
        run.dump = dump.readAll();
    return run;
}

QJsonObject parse(const ScriptRun& run)
{
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(run.dump, &error);
    EXPECT_EQ(QJsonParseError::NoError, error.error) << error.errorString().toStdString() << "\n"
                                                     << run.dump.toStdString();
    return document.object();
}

std::vector<double> numbers(const QJsonValue& value)
{
    std::vector<double> list;
    for (const QJsonValue& entry : value.toArray())
        list.push_back(entry.toDouble());
    return list;
}

std::vector<double> identity()
{
    return {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
}

} // namespace

TEST(SceneDump, AnEmptySceneHasItsRootAndSelectionNode)
{
    const ScriptRun run = runScript({"# nothing"});
    ASSERT_EQ(0, run.exitCode) << run.err.toStdString();
    const QJsonObject scene = parse(run);
    const QStringList keys = {"globalScalingFactor", "measuring", "focused", "elements", "selectedPoints"};
    for (const QString& key : keys)
        EXPECT_TRUE(scene.contains(key)) << key.toStdString();
    EXPECT_EQ(keys.size(), scene.keys().size());
    EXPECT_EQ(1.0, scene["globalScalingFactor"].toDouble());
    EXPECT_EQ(1.0, scene["measuring"].toDouble());
    EXPECT_TRUE(scene["focused"].isNull());
    EXPECT_TRUE(scene["selectedPoints"].toArray().isEmpty());

    const QJsonArray elements = scene["elements"].toArray();
    ASSERT_EQ(2, elements.size());
    const QJsonObject root = elements[0].toObject();
    const QJsonObject selection = elements[1].toObject();
    EXPECT_EQ("Coordinatesystem", root["type"].toString());
    EXPECT_TRUE(root["parent"].isNull());
    EXPECT_EQ(QJsonArray{selection["name"]}, root["childs"].toArray());
    EXPECT_EQ("MultipleElementsSelection", selection["type"].toString());
    EXPECT_EQ(root["name"], selection["parent"]);
    for (const QJsonObject& element : {root, selection}) {
        const QStringList elementKeys = {"name",          "type",    "parent",           "visible", "transform",
                                         "complete",      "origin",  "scalingFactor",    "childs",  "opacity",
                                         "boundingBoxShown"};
        EXPECT_EQ(elementKeys.size(), element.keys().size());
        for (const QString& key : elementKeys)
            EXPECT_TRUE(element.contains(key)) << key.toStdString();
        EXPECT_TRUE(element["visible"].toBool());
        EXPECT_EQ(identity(), numbers(element["transform"]));
        EXPECT_EQ(identity(), numbers(element["complete"]));
        EXPECT_EQ(identity(), numbers(element["origin"]));
        EXPECT_EQ(1.0, element["scalingFactor"].toDouble());
    }
}

TEST(SceneDump, ShowsTheMatricesAfterMovesUndoAndRedo)
{
    const ScriptRun run = runScript({"translate(Coordinatesystem,10,0,0,1)",
                                     "translate(MultipleElementsSelection,10,0,0,1)",
                                     "rotate(MultipleElementsSelection,0,0,1,90,1,0)", "undo", "redo",
                                     "measure(0.30000000000000004)"},
                                    {"--log-level", "4000"});
    ASSERT_EQ(0, run.exitCode) << run.err.toStdString();
    // The root refuses to move; the level 4000 also shows the tree.
    EXPECT_TRUE(run.err.contains("Element 'Coordinatesystem' is not transformable")) << run.err.toStdString();
    EXPECT_TRUE(run.err.contains("ElementList [# 2]")) << run.err.toStdString();
    EXPECT_TRUE(run.err.contains("Tree")) << run.err.toStdString();

    const QJsonObject scene = parse(run);
    const QJsonArray elements = scene["elements"].toArray();
    ASSERT_EQ(2, elements.size());
    EXPECT_EQ(identity(), numbers(elements[0].toObject()["transform"]));
    const std::vector<double> moved = numbers(elements[1].toObject()["transform"]);
    const std::vector<double> expected = {0, -1, 0, 0, 1, 0, 0, 0, 0, 0, 1, 0, 10, 0, 0, 1};
    ASSERT_EQ(16u, moved.size());
    for (int i = 0; i < 16; ++i)
        EXPECT_NEAR(expected[i], moved[i], 1e-15) << i;
    EXPECT_EQ(moved, numbers(elements[1].toObject()["complete"]));

    // Numbers carry every digit they need to read back exactly.
    EXPECT_EQ(0.30000000000000004, scene["measuring"].toDouble());
    EXPECT_TRUE(run.dump.contains("\"measuring\": 0.30000000000000004")) << run.dump.toStdString();
}
