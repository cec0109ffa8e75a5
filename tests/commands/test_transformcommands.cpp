// The transform commands run as command strings through the host's processor, with undo
// and redo through the host's own commands.
#include "commandfixture.h"
#include "module_scene/commands/rotate.h"
#include "module_scene/commands/transform.h"
#include "module_scene/commands/translate.h"
#include "support/logcapture.h"

using qel::commands::scene::Rotate;
using qel::commands::scene::Transform;
using qel::commands::scene::Translate;
using namespace qel::test;

namespace {

// A quarter turn about z as the element's operator+= applies it: the rotation matrices of
// the math library are the transposed ones, so +90 degrees maps x to -y.
Matrix4 quarterTurnAboutZ(double x, double y, double z)
{
    return matrixOf({0, -1, 0, 0, 1, 0, 0, 0, 0, 0, 1, 0, x, y, z, 1});
}

} // namespace

TEST_F(CommandTest, TranslateIsAbsoluteOrRelativeAndUndoesThroughTheHost)
{
    auto model = addElement("Model");
    ASSERT_TRUE(run("translate(Model,10,0,0,1)"));
    EXPECT_MATRIX_EQ(Matrix4::translation(10, 0, 0), model->getTransformMatrix());
    EXPECT_MATRIX_EQ(Matrix4::identity(), model->getPastTransformMatrix());

    ASSERT_TRUE(run("translate(Model,1,2,3,0)"));
    EXPECT_MATRIX_EQ(Matrix4::translation(11, 2, 3), model->getTransformMatrix());
    // Absolute means the position, not a move by the vector.
    ASSERT_TRUE(run("translate(Model,4,5,6,1)"));
    EXPECT_MATRIX_EQ(Matrix4::translation(4, 5, 6), model->getTransformMatrix());
    EXPECT_EQ(3u, undoSteps());

    ASSERT_TRUE(run("undo"));
    EXPECT_MATRIX_EQ(Matrix4::translation(11, 2, 3), model->getTransformMatrix());
    ASSERT_TRUE(run("undo"));
    ASSERT_TRUE(run("undo"));
    EXPECT_MATRIX_EQ(Matrix4::identity(), model->getTransformMatrix());
    ASSERT_TRUE(run("redo"));
    EXPECT_MATRIX_EQ(Matrix4::translation(10, 0, 0), model->getTransformMatrix());
    ASSERT_TRUE(run("redo"));
    EXPECT_MATRIX_EQ(Matrix4::translation(11, 2, 3), model->getTransformMatrix());
}

TEST_F(CommandTest, TranslateWorksOnTheFocusedElementAndOnNamesWithBlanks)
{
    auto model = addElement("My model");
    ASSERT_TRUE(run("translate(My model,1,0,0,1)"));
    EXPECT_MATRIX_EQ(Matrix4::translation(1, 0, 0), model->getTransformMatrix());

    scene()->setFocus(model.get());
    ASSERT_TRUE(run("translate(0,2,0,0)"));
    EXPECT_MATRIX_EQ(Matrix4::translation(1, 2, 0), model->getTransformMatrix());

    // A relative move by nothing is still one undo step.
    const size_t steps = undoSteps();
    ASSERT_TRUE(run("translate(My model,0,0,0,0)"));
    EXPECT_EQ(steps + 1, undoSteps());
    EXPECT_MATRIX_EQ(Matrix4::translation(1, 2, 0), model->getTransformMatrix());
}

TEST_F(CommandTest, TranslateTakesShownUnitsAndTheGlobalScale)
{
    auto model = addElement("Model");
    ASSERT_TRUE(run("measure(2)"));
    ASSERT_TRUE(run("translate(Model,10,0,0,1)"));
    EXPECT_MATRIX_EQ(Matrix4::translation(5, 0, 0), model->getTransformMatrix());

    scene()->forceScaleFactor(3.0);
    ASSERT_TRUE(run("translate(Model,2,4,0,0)"));
    EXPECT_MATRIX_EQ(Matrix4::translation(8, 6, 0), model->getTransformMatrix());
}

TEST_F(CommandTest, RotateRelativeTurnsAboutThePositionAndUndoes)
{
    auto model = addElement("Model");
    ASSERT_TRUE(run("translate(Model,10,0,0,1)"));
    ASSERT_TRUE(run("rotate(Model,0,0,1,90,1,0)"));
    const Matrix4 turned = model->getTransformMatrix();
    EXPECT_MATRIX_NEAR(quarterTurnAboutZ(10, 0, 0), turned);
    // Zeros are exact: the shift into place snaps them.
    for (int entry : {2, 3, 6, 7, 8, 9, 11, 13, 14})
        EXPECT_EQ(0.0, turned[entry]) << entry;
    EXPECT_EQ(10.0, turned[12]);

    // Radians give the same turn; a second quarter turn makes a half turn.
    ASSERT_TRUE(run("rotate(Model,0,0,2,1.5707963267948966,0,0)"));
    EXPECT_MATRIX_NEAR(matrixOf({-1, 0, 0, 0, 0, -1, 0, 0, 0, 0, 1, 0, 10, 0, 0, 1}), model->getTransformMatrix());

    ASSERT_TRUE(run("undo"));
    EXPECT_MATRIX_EQ(turned, model->getTransformMatrix());
    ASSERT_TRUE(run("undo"));
    EXPECT_MATRIX_EQ(Matrix4::translation(10, 0, 0), model->getTransformMatrix());
    ASSERT_TRUE(run("redo"));
    EXPECT_MATRIX_EQ(turned, model->getTransformMatrix());
}

TEST_F(CommandTest, RotateAbsoluteReplacesTheOrientation)
{
    auto model = addElement("Model");
    ASSERT_TRUE(run("translate(Model,1,2,3,1)"));
    ASSERT_TRUE(run("rotate(Model,0,0,1,90,1,1)"));
    const Matrix4 once = model->getTransformMatrix();
    EXPECT_MATRIX_NEAR(quarterTurnAboutZ(1, 2, 3), once);
    ASSERT_TRUE(run("rotate(Model,0,0,1,90,1,1)"));
    EXPECT_MATRIX_NEAR(once, model->getTransformMatrix());

    scene()->setFocus(model.get());
    ASSERT_TRUE(run("rotate(1,0,0,0,1,1)"));
    EXPECT_MATRIX_NEAR(Matrix4::translation(1, 2, 3), model->getTransformMatrix());
}

TEST_F(CommandTest, RotateByNothingIsAStepButAZeroAxisIsRefused)
{
    auto model = addElement("Model");
    ASSERT_TRUE(run("rotate(Model,0,0,1,0,1,0)"));
    EXPECT_EQ(1u, undoSteps());
    EXPECT_MATRIX_EQ(Matrix4::identity(), model->getTransformMatrix());

    LogCapture log;
    // The axis is checked before the element is: the root isn't transformable either.
    for (const char* command : {"rotate(Model,0,0,0,90,1,0)", "rotate(Coordinatesystem,0,0,0,90,1,0)"})
        ASSERT_TRUE(run(command));
    EXPECT_EQ(2, log.count("Not a valid rotation axis", 2000));
    EXPECT_EQ(0, log.count("not transformable"));
    EXPECT_EQ(1u, undoSteps());
}

TEST_F(CommandTest, TransformSetsTheMatrixWithoutAnUndoStep)
{
    auto model = addElement("Model");
    ASSERT_TRUE(run("transform(Model,[0,1,0,0,-1,0,0,0,0,0,1,0,4,5,6,1])"));
    EXPECT_MATRIX_EQ(matrixOf({0, 1, 0, 0, -1, 0, 0, 0, 0, 0, 1, 0, 4, 5, 6, 1}), model->getTransformMatrix());
    EXPECT_EQ(0u, undoSteps());
    EXPECT_EQ("transform(Model,[0,1,0,0,-1,0,0,0,0,0,1,0,4,5,6,1])", Transform::getCommandString(model.get()));
}

TEST_F(CommandTest, APreparedTransformOnlyRecordsTheMove)
{
    auto model = addElement("Model");
    model->setTransformMatrix(Matrix4::translation(0.1, 0, 0));
    qel::main::Command* command = Transform::getTransformCommand(model.get());
    EXPECT_EQ("transform", command->getName());
    model->setTransformMatrix(Matrix4::translation(7, 0, 0));
    ASSERT_TRUE(qel::main::Overseer::getInstance()->getCommandProcessor()->processCommand(
        command, qel::main::Command::EXECUTE_SYNCHRONOUS, false));
    EXPECT_MATRIX_EQ(Matrix4::translation(7, 0, 0), model->getTransformMatrix());

    // Sixteen significant digits keep the value.
    model->setTransformMatrix(Matrix4::translation(0.1, 0, 0));
    const QString text = Transform::getCommandString(model.get());
    EXPECT_TRUE(text.endsWith(",0.1,0,0,1])")) << text.toStdString();
    model->setTransformMatrix(Matrix4::identity());
    ASSERT_TRUE(run(text));
    EXPECT_MATRIX_EQ(Matrix4::translation(0.1, 0, 0), model->getTransformMatrix());
}

TEST_F(CommandTest, BadTransformInputIsLoggedAndChangesNothing)
{
    auto model = addElement("Model");
    ASSERT_TRUE(run("translate(Model,1,2,3,1)"));
    const Matrix4 before = model->getTransformMatrix();
    const size_t steps = undoSteps();
    LogCapture log;

    EXPECT_TRUE(run("translate(Ghost,1,2,3,1)"));
    EXPECT_EQ(1, log.count("No selected element", 4000));
    EXPECT_TRUE(run("rotate(Ghost,0,0,1,90,1,0)"));
    EXPECT_EQ(1, log.count("No selected scene element", 2000));
    EXPECT_TRUE(run("transform(Ghost,[1,0,0,0,0,1,0,0,0,0,1,0,0,0,0,1])"));
    EXPECT_EQ(1, log.count("Element with name 'Ghost' wasn't found", 2000));

    // A coordinate that isn't a number matches no parameter set: nothing runs.
    EXPECT_FALSE(run("translate(Model,abc,0,0,1)"));
    EXPECT_TRUE(log.contains("abc", 1000));
    EXPECT_FALSE(run("rotate(Model,0,0,one,90,1,0)"));
    EXPECT_TRUE(log.contains("one", 1000));

    EXPECT_TRUE(run("transform(Model,[1,0,0,0,0,1,0,0,0,0,1,0,0,0,0])"));
    EXPECT_EQ(1, log.count("Invalid size (15) of vector found", 1000));
    EXPECT_TRUE(run("transform(Model,[1,2,3])"));
    EXPECT_EQ(1, log.count("Invalid size (3) of vector found", 1000));

    // Without focus the focused forms find nothing.
    EXPECT_TRUE(run("translate(1,2,3,1)"));
    EXPECT_EQ(2, log.count("No selected element", 4000));

    EXPECT_MATRIX_EQ(before, model->getTransformMatrix());
    EXPECT_EQ(steps, undoSteps());
}

TEST_F(CommandTest, TheRootIsNotTransformable)
{
    const QString root = scene()->getRootNode()->getName();
    LogCapture log;
    EXPECT_TRUE(run(QString("translate(%1,10,0,0,1)").arg(root)));
    EXPECT_EQ(1, log.count(QString("Element '%1' is not transformable").arg(root), 4000));
    EXPECT_TRUE(run(QString("rotate(%1,0,0,1,90,1,0)").arg(root)));
    EXPECT_EQ(1, log.count(QString("Element '%1' is not transformable").arg(root), 2000));
    EXPECT_TRUE(run(QString("transform(%1,[1,0,0,0,0,1,0,0,0,0,1,0,5,0,0,1])").arg(root)));
    EXPECT_EQ(2, log.count(QString("Element '%1' is not transformable").arg(root), 4000));
    EXPECT_MATRIX_EQ(Matrix4::identity(), scene()->getRootNode()->getTransformMatrix());
    EXPECT_EQ(0u, undoSteps());
}

TEST_F(CommandTest, CommandStringsAreBuiltInTheModuleSyntax)
{
    EXPECT_EQ("translate(My model,1.5,0,1e-07,1)", Translate::buildCommandString("My model", 1.5, 0, 1e-7, true));
    EXPECT_EQ("translate(a,0.333333,-2,3,0)", Translate::buildCommandString("a", 1.0 / 3.0, -2, 3, false));
    EXPECT_EQ("rotate(a,0,0,1,45.5,1,0)", Rotate::buildCommandString("a", 0.0, 0.0, 1.0, 45.5, false));
    EXPECT_EQ("rotate(a,1,0,1,90,1,1)", Rotate::buildCommandString("a", true, false, true, 90, true));

    auto model = addElement("a");
    ASSERT_TRUE(run(Translate::buildCommandString("a", 1.5, 2, 3, true)));
    ASSERT_TRUE(run(Rotate::buildCommandString("a", false, false, true, 90, false)));
    EXPECT_MATRIX_NEAR(quarterTurnAboutZ(1.5, 2, 3), model->getTransformMatrix());
}

TEST_F(CommandTest, ARefusedMoveLeavesTheMatricesAsTheyWere)
{
    auto model = addElement("Model");
    ASSERT_TRUE(run("translate(Model,1,0,0,1)"));
    int refusals = 0;
    auto refuse = [&refusals](const qel::main::Event* event) {
        *static_cast<bool*>(event->getData()) = false;
        ++refusals;
    };
    qel::main::EventManager::getInstance()->registerEventFunction(
        qel::scene::SCENE_ELEMENT_TRANSFORM_STARTING, new qel::main::EventManager::EventFunction(refuse), &refusals);
    ASSERT_TRUE(run("translate(Model,5,0,0,1)"));
    ASSERT_TRUE(run("rotate(Model,1,0,0,90,1,0)"));
    qel::main::EventManager::getInstance()->unregisterAllEventFunctionsOf(&refusals);
    EXPECT_EQ(2, refusals);
    EXPECT_MATRIX_EQ(Matrix4::translation(1, 0, 0), model->getTransformMatrix());
    EXPECT_MATRIX_EQ(Matrix4::identity(), model->getPastTransformMatrix());
    // Each run still made its undo step, which puts back what is there.
    ASSERT_TRUE(run("undo"));
    EXPECT_MATRIX_EQ(Matrix4::translation(1, 0, 0), model->getTransformMatrix());
}

// Each refusal is one line at console level, naming what was refused, and moves nothing.
TEST_F(CommandTest, MovesToNonFiniteOrSingularMatricesAreRefusedWithOneLine)
{
    auto model = addElement("Model");
    ASSERT_TRUE(run("translate(Model,1,2,3,1)"));
    const Matrix4 transform = model->getTransformMatrix();
    const Matrix4 past = model->getPastTransformMatrix();
    const Matrix4 origin = model->getOrigin();

    for (const char* command :
         {"translate(Model,1e308,0,0,1)", "translate(Model,1e308,1e308,1e308,0)",
          "transform(Model,[0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0])", "transform(Model,[1,0,0,0,0,1,0,0,0,0,0,0,0,0,0,1])"}) {
        LogCapture log;
        run(command);
        int consoleLines = 0;
        for (const qel::log::LogRecord& record : log.records())
            consoleLines += record.level <= 2000 ? 1 : 0;
        EXPECT_EQ(1, consoleLines) << command;
        EXPECT_TRUE(log.contains("Model", 2000)) << command;
        EXPECT_TRUE(model->getTransformMatrix().isFinite()) << command;
        EXPECT_MATRIX_EQ(transform, model->getTransformMatrix());
        EXPECT_MATRIX_EQ(past, model->getPastTransformMatrix());
        EXPECT_MATRIX_EQ(origin, model->getOrigin());
    }
    // A step that a refused move left puts back what is there.
    while (undoSteps() > 1)
        ASSERT_TRUE(run("undo"));
    EXPECT_MATRIX_EQ(transform, model->getTransformMatrix());
}
