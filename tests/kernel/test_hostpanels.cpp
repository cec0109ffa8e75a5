#include "kernel/gui/comboboxparameterpanel.h"
#include "kernel/gui/comboboxparameterpanelfactory.h"
#include "kernel/gui/panelfactory.h"
#include "kernel/gui/parameterdialog.h"
#include "kernel/gui/qcolorparameterpanelfactory.h"
#include "kernel/gui/sliderparameterpanelfactory.h"
#include "kernel/main/command.h"
#include "kernel/main/notifier.h"
#include "kernel/main/parameter.h"

#include <QColor>
#include <QComboBox>
#include <QCoreApplication>
#include <QLineEdit>
#include <QThread>
#include <gtest/gtest.h>
#include <list>
#include <memory>

using qel::main::AbstractParameter;
using qel::main::Command;
using qel::main::CommandDescriptor;
using qel::main::ComboBoxParameterPanel;
using qel::main::ComboBoxParameterPanelFactory;
using qel::main::Parameter;
using qel::main::ParameterPanel;
using qel::main::ParameterSet;

namespace {

class PanelCommand : public Command
{
public:
    PanelCommand() : Command(new CommandDescriptor("setstereomode", "Sets the stereo mode")) {}
    void execute() override {}
};

// Serves a list of names, as the scene's element panels do.
class NamesNotifier : public qel::main::Notifier
{
public:
    explicit NamesNotifier(std::list<QString>* names) : names(names) {}
    void notify() override
    {
        names->push_back("Sphere");
        Notifier::update();
    }

private:
    std::list<QString>* names;
};

// Writes a fixed choice into every parameter of its set, as a whole-set widget does.
class FixedSetPanelFactory : public qel::main::PanelFactory
{
public:
    QWidget* createPanel(ParameterSet* set) override
    {
        for (AbstractParameter* parameter : *set->getParameterList())
            parameter->castString("7");
        return new QWidget();
    }
};

} // namespace

TEST(ParameterPanels, ComboBoxesShowNamesAndGiveNumbersOrNames)
{
    ComboBoxParameterPanelFactory stereo({{"None", 0}, {"Red/Cyan", 1}, {"Red/Blue", 2}});
    Parameter<int> byName("Stereo Mode", "mode", "Red/Cyan", true, &stereo);
    std::unique_ptr<ParameterPanel> panel(stereo.createPanel(&byName));
    auto* box = qobject_cast<QComboBox*>(panel->getEditorWidget());
    ASSERT_NE(nullptr, box);
    EXPECT_EQ(QStringList({"None", "Red/Cyan", "Red/Blue"}),
              QStringList({box->itemText(0), box->itemText(1), box->itemText(2)}));
    EXPECT_EQ(QString("1"), panel->getText());
    EXPECT_TRUE(panel->confirmParameter());
    EXPECT_EQ(1, *byName.getValue());

    Parameter<int> byNumber("Stereo Mode", "mode", "2", true, &stereo);
    std::unique_ptr<ParameterPanel> second(stereo.createPanel(&byNumber));
    EXPECT_EQ(QString("2"), second->getText());
    EXPECT_EQ(2, stereo.countPanels());
    second.reset();
    EXPECT_EQ(1, stereo.countPanels());
    byName.deleteValue();
}

TEST(ParameterPanels, NotifierRefreshesListPanelsAndKeepsTheChoice)
{
    std::list<QString> names = {"Box", "Cone"};
    Parameter<QString> element("name", "element", "Cone");
    ComboBoxParameterPanel panel(&element, &names);
    EXPECT_EQ(QString("Cone"), panel.getText());

    NamesNotifier notifier(&names);
    notifier.notify();
    auto* box = qobject_cast<QComboBox*>(panel.getEditorWidget());
    ASSERT_EQ(3, box->count());
    EXPECT_EQ(QString("Sphere"), box->itemText(2));
    EXPECT_EQ(QString("Cone"), panel.getText());

    // From another thread the refresh waits for the application thread.
    names.remove("Cone");
    QThread* thread = QThread::create([&notifier]() { notifier.notify(); });
    thread->start();
    thread->wait();
    delete thread;
    EXPECT_EQ(3, box->count());
    QCoreApplication::processEvents();
    EXPECT_EQ(QStringList({"Box", "Sphere", "Sphere"}),
              QStringList({box->itemText(0), box->itemText(1), box->itemText(2)}));
}

TEST(ParameterPanels, SliderAndColourStartFromTheGUIDefault)
{
    qel::main::SliderParameterPanelFactory disparity(0.0f, 10.0f, 0.1f);
    Parameter<double> value("Disparity", "The disparity of the view", "0.6", true, &disparity);
    std::unique_ptr<ParameterPanel> slider(disparity.createPanel(&value));
    EXPECT_EQ(QString("0.6"), slider->getText());
    value.setDefaultParameterForDefaultGUI("50");
    slider->updateWidget();
    EXPECT_EQ(QString("10"), slider->getText()); // held at the maximum

    qel::main::QColorParameterPanelFactory colours;
    Parameter<QColor> background("Background Color", "colour", "#4c4c4c", true, &colours);
    std::unique_ptr<ParameterPanel> colour(colours.createPanel(&background));
    EXPECT_EQ(QString("#4c4c4c"), colour->getText());
}

TEST(ParameterDialog, PagesCheckTheArgumentsAndBuildTheCommandString)
{
    PanelCommand command;
    ComboBoxParameterPanelFactory modes({{"None", 0}, {"Red/Cyan", 1}});
    auto* first = new ParameterSet(0, "Stereo options");
    first->addParameter(new Parameter<double>("Disparity", "The disparity of the view", "0.6"));
    first->addParameter(new Parameter<QString>("Label", "free text", "left eye"));
    auto* second = new ParameterSet(1, "");
    second->addParameter(new Parameter<int>("Stereo Mode", "mode", "None", true, &modes));
    command.addParameterSet(first);
    command.addParameterSet(second);

    qel::gui::ParameterDialog dialog(&command, *command.getParameterSets());
    ASSERT_EQ(2, dialog.getSetCount());
    EXPECT_EQ(QString("setstereomode(0.6,left eye)"), dialog.getCommandString());

    EXPECT_TRUE(dialog.setArgument(0, "wide"));
    dialog.accept();
    EXPECT_NE(QDialog::Accepted, dialog.result());
    EXPECT_TRUE(dialog.getError().contains("'wide'"));
    EXPECT_TRUE(dialog.getError().contains("Disparity"));

    dialog.setArgument(0, "1.5");
    dialog.accept();
    EXPECT_EQ(QDialog::Accepted, dialog.result());
    EXPECT_TRUE(dialog.getError().isEmpty());
    EXPECT_EQ(QString("setstereomode(1.5,left eye)"), dialog.getCommandString());

    dialog.setCurrentSetIndex(1);
    EXPECT_EQ(second, dialog.getCurrentSet());
    EXPECT_FALSE(dialog.setArgument(0, "1")); // a combo box, no line edit
    EXPECT_EQ(QString("setstereomode(0)"), dialog.getCommandString());
}

TEST(ParameterDialog, AWholeSetWidgetFillsTheParameters)
{
    PanelCommand command;
    FixedSetPanelFactory speeds;
    auto* set = new ParameterSet(0, "Transformations");
    set->addParameter(new Parameter<int>("mouse wheel speed", "wheel", "100"));
    set->addParameter(new Parameter<int>("mouse right", "right", "100"));
    set->setParameterSetPanelFactory(&speeds);
    command.addParameterSet(set);

    qel::gui::ParameterDialog dialog(&command, *command.getParameterSets());
    EXPECT_EQ(QString("setstereomode(7,7)"), dialog.getCommandString());
    set->deleteValues();
}
