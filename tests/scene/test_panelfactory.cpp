#include "kernel/gui/parameterpanel.h"
#include "kernel/main/parameter.h"
#include "module_scene/gui/sceneelementparameterpanelfactory.h"
#include "module_scene/gui/sceneelementparameterpanelnotifier.h"
#include "module_scene/gui/viewer.h"
#include "module_scene/scene.h"
#include "testelement.h"

#include <QComboBox>
#include <gtest/gtest.h>
#include <memory>

using qel::main::Parameter;
using qel::main::ParameterPanel;
using qel::main::SceneElementParameterPanelFactory;
using qel::main::SceneElementParameterPanelNotifier;
using namespace qel::test;
using qel::util::ZPointer;

namespace {

QStringList namesOf(const SceneElementParameterPanelFactory& factory)
{
    return QStringList(factory.getElementNames().begin(), factory.getElementNames().end());
}

// Works on the global scene and ends it afterwards, so that no other test meets it.
class ElementPanels : public ::testing::Test
{
protected:
    void SetUp() override
    {
        scene = qel::scene::_GlobalScene();
        scene->addElement(makeModel("b", 1.0, 1.0));
        scene->addElement(makeModel("a", 2.0, 1.0));
        scene->addElement(ZPointer<TestElement>(new TestElement("Light", "Lightsource")));
    }
    void TearDown() override
    {
        scene = nullptr;
        delete qel::gui::Viewer::getInstance();
    }

    ZPointer<qel::scene::Scene> scene;
};

} // namespace

TEST_F(ElementPanels, TheGlobalSceneIsOneAndEndsWithTheViewer)
{
    EXPECT_EQ(scene.get(), qel::scene::_GlobalScene().get());
    EXPECT_EQ(qel::gui::Viewer::getInstance()->getGlobalScene().get(), scene.get());
    EXPECT_EQ(5u, scene->getElementList()->size());
}

TEST_F(ElementPanels, AFilterListsOnlyItsTypesSortedAndNoFilterListsEverything)
{
    SceneElementParameterPanelFactory models("SceneVCGModel");
    models.updateList();
    EXPECT_EQ((QStringList{"a", "b"}), namesOf(models));

    SceneElementParameterPanelFactory two(QStringList{"Lightsource", "SceneVCGModel"});
    two.updateList();
    EXPECT_EQ((QStringList{"Light", "a", "b"}), namesOf(two));

    SceneElementParameterPanelFactory caseMatters("scenevcgmodel");
    caseMatters.updateList();
    EXPECT_TRUE(namesOf(caseMatters).isEmpty());

    SceneElementParameterPanelFactory all;
    Parameter<QString> parameter("name", "The element", "b");
    std::unique_ptr<ParameterPanel> panel(all.createPanel(&parameter));
    EXPECT_EQ((QStringList{"Coordinatesystem", "Light", "MultipleElementsSelection", "a", "b"}), namesOf(all));
    auto* box = qobject_cast<QComboBox*>(panel->getEditorWidget());
    ASSERT_NE(nullptr, box);
    EXPECT_EQ(5, box->count());
    EXPECT_EQ("b", panel->getText());
    EXPECT_EQ(1, all.countPanels());
}

TEST_F(ElementPanels, TheNotifierFollowsAddedRemovedAndRenamedElements)
{
    SceneElementParameterPanelFactory models("SceneVCGModel");
    Parameter<QString> parameter("name", "The model", "a");
    std::unique_ptr<ParameterPanel> panel(models.createPanel(&parameter));
    auto* box = qobject_cast<QComboBox*>(panel->getEditorWidget());
    ASSERT_NE(nullptr, box);
    {
        SceneElementParameterPanelNotifier notifier(&models);
        auto added = makeModel("c", 1.0, 1.0);
        scene->addElement(added);
        EXPECT_EQ((QStringList{"a", "b", "c"}), namesOf(models));
        EXPECT_EQ(3, box->count());
        added->setName("0");
        EXPECT_EQ((QStringList{"0", "a", "b"}), namesOf(models));
        scene->removeElement(scene->getSceneElement("b"));
        EXPECT_EQ((QStringList{"0", "a"}), namesOf(models));
        EXPECT_EQ(2, box->count());
        EXPECT_EQ("a", panel->getText());
    }
    scene->addElement(makeModel("d", 1.0, 1.0));
    EXPECT_EQ((QStringList{"0", "a"}), namesOf(models));
}
