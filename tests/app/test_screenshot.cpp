// The picture of the scene that qel writes after a script, as users who script it see it.
#include "app/hostprocess.h"

#include <QColor>
#include <QImage>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace {

const QColor Background(0x4c, 0x4c, 0x4c);

// The cube [-1, 1]^3 with outward faces.
const char* const CubeOff = "OFF\n8 12 0\n"
                            "-1 -1 -1\n1 -1 -1\n1 1 -1\n-1 1 -1\n-1 -1 1\n1 -1 1\n1 1 1\n-1 1 1\n"
                            "3 0 2 1\n3 0 3 2\n3 4 5 6\n3 4 6 7\n3 0 1 5\n3 0 5 4\n"
                            "3 1 2 6\n3 1 6 5\n3 2 3 7\n3 2 7 6\n3 3 0 4\n3 3 4 7\n";

bool isBackground(const QColor& color)
{
    return qAbs(color.red() - Background.red()) <= 2 && qAbs(color.green() - Background.green()) <= 2
           && qAbs(color.blue() - Background.blue()) <= 2;
}

// Most of the 7 x 7 patch at a corner is background: the grid's lines may cross it.
::testing::AssertionResult backgroundNear(const QImage& image, int x, int y)
{
    int matching = 0;
    for (int dy = -3; dy <= 3; ++dy) {
        for (int dx = -3; dx <= 3; ++dx) {
            if (isBackground(image.pixelColor(qBound(0, x + dx, image.width() - 1), qBound(0, y + dy, image.height() - 1))))
                ++matching;
        }
    }
    if (matching >= 25)
        return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << "only " << matching << " of 49 pixels near (" << x << ", " << y
                                         << ") show the background";
}

struct Shot
{
    qel::test::HostRun run;
    QImage image;
    bool written = false;
};

Shot takeScreenshot(const QTemporaryDir& dir, const QStringList& lines, const QStringList& extraArguments)
{
    const QString script = qel::test::writeScript(dir.filePath("script.qel"), lines);
    const QString picture = dir.filePath("out.png");
    Shot shot;
    shot.run = qel::test::runHost(QStringList{"--offscreen", "--run", script, "--screenshot", picture} + extraArguments);
    shot.written = QFile::exists(picture);
    shot.image.load(picture);
    return shot;
}

} // namespace

TEST(Screenshot, ShowsTheLoadedModelsLitOnTheBackgroundAtTheAskedSize)
{
    QTemporaryDir dir;
    QFile cube(dir.filePath("cube.off"));
    ASSERT_TRUE(cube.open(QIODevice::WriteOnly));
    cube.write(CubeOff);
    cube.close();
    const Shot shot = takeScreenshot(dir,
                                     {"loadmodel(" + cube.fileName() + ",left)", "loadmodel(" + cube.fileName() + ",right)",
                                      "translate(right,2.5,0,0,1)"},
                                     {"--size", "400x300"});
    ASSERT_EQ(0, shot.run.exitCode) << shot.run.err.toStdString();
    ASSERT_TRUE(shot.written);
    ASSERT_EQ(QSize(400, 300), shot.image.size());
    // The lower left corner holds the axes and markers.
    EXPECT_TRUE(backgroundNear(shot.image, 3, 3));
    EXPECT_TRUE(backgroundNear(shot.image, 396, 3));
    EXPECT_TRUE(backgroundNear(shot.image, 396, 296));

    // The first model faces the eye in the middle, lit: bright and grey as its default colour.
    const QColor centre = shot.image.pixelColor(200, 150);
    EXPECT_GT(centre.lightness(), 150);
    EXPECT_LT(qAbs(centre.red() - centre.blue()), 10);
    // The second one, moved right, is beside it.
    EXPECT_GT(shot.image.pixelColor(340, 150).lightness(), 120);
}

TEST(Screenshot, AClippingPlaneAddedByCommandIsDrawnOverTheBackground)
{
    QTemporaryDir dir;
    QFile cube(dir.filePath("cube.off"));
    ASSERT_TRUE(cube.open(QIODevice::WriteOnly));
    cube.write(CubeOff);
    cube.close();
    const QStringList twoModels = {"loadmodel(" + cube.fileName() + ",left)",
                                   "loadmodel(" + cube.fileName() + ",right)", "translate(right,2.5,0,0,1)"};
    const Shot shot = takeScreenshot(dir, twoModels + QStringList{"addclippingplane"}, {"--size", "400x300"});
    ASSERT_EQ(0, shot.run.exitCode) << shot.run.err.toStdString();
    ASSERT_TRUE(shot.written);
    // The plane's outline covers the view, so the corners are no longer plain background.
    EXPECT_FALSE(backgroundNear(shot.image, 396, 3));
    // The models are not below the plane: they stay whole and lit.
    EXPECT_GT(shot.image.pixelColor(200, 150).lightness(), 150);
    EXPECT_GT(shot.image.pixelColor(340, 150).lightness(), 120);
}

TEST(Screenshot, AnEmptySceneIsTheBackgroundWithTheCoordinateSystem)
{
    QTemporaryDir dir;
    const Shot shot = takeScreenshot(dir, {"# nothing"}, {});
    ASSERT_EQ(0, shot.run.exitCode) << shot.run.err.toStdString();
    ASSERT_EQ(QSize(1024, 768), shot.image.size()) << "the default size";
    EXPECT_TRUE(backgroundNear(shot.image, 1020, 3));
    EXPECT_TRUE(backgroundNear(shot.image, 3, 3));
    // The y axis runs up the middle in green.
    const QColor axis = shot.image.pixelColor(511, 100).green() > shot.image.pixelColor(512, 100).green()
                            ? shot.image.pixelColor(511, 100)
                            : shot.image.pixelColor(512, 100);
    EXPECT_GT(axis.green(), axis.red() + 40);
}

TEST(Screenshot, AnEmptySizeWritesNothingAndFails)
{
    QTemporaryDir dir;
    const Shot shot = takeScreenshot(dir, {"# nothing"}, {"--size", "0x100"});
    EXPECT_NE(0, shot.run.exitCode);
    EXPECT_FALSE(shot.written);
    EXPECT_TRUE(shot.run.err.contains("could not save the screenshot")) << shot.run.err.toStdString();
}
