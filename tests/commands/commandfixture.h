#pragma once

#include "kernel/main/command.h"
#include "kernel/main/commandprocessor.h"
#include "kernel/main/event.h"
#include "kernel/main/eventmanager.h"
#include "kernel/main/modulemanager.h"
#include "kernel/main/overseer.h"
#include "kernel/main/undoredomanager.h"
#include "kernel/util/zpointer.h"
#include "module_scene/gui/viewer.h"
#include "module_scene/modulescenefactory.h"
#include "module_scene/scene.h"
#include "module_scene/sceneevents.h"
#include "scene/testelement.h"

#include <QString>
#include <gtest/gtest.h>

namespace qel {
namespace test {

typedef scene::SceneElement::Matrix4 Matrix4;

// Runs command strings through the host's processor against the global scene, with the
// scene module started as the host starts it. Each test begins with an empty scene and
// an empty undo history.
class CommandTest : public ::testing::Test
{
public:
    static util::ZPointer<scene::Scene> scene() { return scene::_GlobalScene(); }

protected:
    static void SetUpTestSuite()
    {
        if (!main::ModuleManager::getInstance()->getModule("Scene"))
            main::ModuleManager::getInstance()->addModule(getFactory());
    }

    void SetUp() override { reset(); }
    void TearDown() override { reset(); }

    void reset()
    {
        scene()->cleanScene();
        // The root stays and may have kept the focus.
        scene::Scene::ElementList nothing;
        main::Event clearSelection(scene::SCENE_ELEMENTS_SELECTION, &nothing, nullptr, false);
        main::EventManager::getInstance()->fireEvent(clearSelection);
        scene::SceneElement* selection = scene()->getSelectionNode().get();
        selection->setTransformMatrix(Matrix4::identity());
        // Cleaning resets the scene's scale but not that of the standing elements.
        for (const auto& element : *scene()->getElementList())
            element->setScalingFactor(1.0);
        main::UndoRedoManager::getInstance()->clear();
    }

    // An element of the scene, placed under the root.
    util::ZPointer<TestElement> addElement(const QString& name)
    {
        util::ZPointer<TestElement> element(new TestElement(name));
        scene()->addElement(element.get());
        return element;
    }

    static bool run(const QString& command)
    {
        return main::Overseer::getInstance()->executeCommand(command, main::Command::EXECUTE_SYNCHRONOUS, false);
    }

    static size_t undoSteps() { return main::UndoRedoManager::getInstance()->undoCount(); }

    static main::Command* prototype(const char* name)
    {
        return main::Overseer::getInstance()->getCommandProcessor()->getCommand(name);
    }
};

// Entries of a matrix in memory order (column-major).
inline Matrix4 matrixOf(std::initializer_list<double> values)
{
    Matrix4 matrix;
    int i = 0;
    for (double value : values)
        matrix[i++] = value;
    return matrix;
}

inline std::string describe(const Matrix4& matrix)
{
    std::string text;
    for (int i = 0; i < 16; ++i)
        text += QString::number(matrix[i], 'g', 17).toStdString() + (i % 4 == 3 ? "; " : ", ");
    return text;
}

// Exact equality, with a readable message.
#define EXPECT_MATRIX_EQ(expected, actual)                                                 \
    EXPECT_TRUE((expected) == (actual)) << "expected " << qel::test::describe(expected) \
                                        << "\n  actual " << qel::test::describe(actual)

// Entries within a few units of the last place, for results of trigonometry.
#define EXPECT_MATRIX_NEAR(expected, actual)                                                          \
    for (int entry = 0; entry < 16; ++entry)                                                          \
    EXPECT_NEAR((expected)[entry], (actual)[entry], 1e-15) << "entry " << entry << " of " << qel::test::describe(actual)

} // namespace test
} // namespace qel
