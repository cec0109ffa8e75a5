#include "kernel/gui/parameterdialog.h"

#include "kernel/gui/panelfactory.h"
#include "kernel/gui/parameterpanel.h"
#include "kernel/gui/parameterpanelfactory.h"
#include "kernel/main/abstractparameter.h"
#include "kernel/main/command.h"
#include "kernel/main/parameterset.h"

#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QTabWidget>
#include <QVBoxLayout>

namespace qel {
namespace gui {

using qel::main::AbstractParameter;
using qel::main::ParameterSet;

ParameterDialog::ParameterDialog(qel::main::Command* command, const std::vector<ParameterSet*>& sets, QWidget* parent)
    : QDialog(parent), commandName(command->getName()), tabs(new QTabWidget(this)), errorLabel(new QLabel(this))
{
    setWindowTitle(commandName);
    auto* layout = new QVBoxLayout(this);
    if (command->getDescriptor() && !command->getDescriptor()->getDescription().isEmpty()) {
        auto* description = new QLabel(command->getDescriptor()->getDescription(), this);
        description->setWordWrap(true);
        layout->addWidget(description);
    }
    for (ParameterSet* set : sets) {
        const QString title = set->getName().isEmpty() ? tr("Set %1").arg(set->getID()) : set->getName();
        tabs->addTab(createPage(set), title);
    }
    // A single form needs no tab.
    tabs->setTabBarAutoHide(true);
    layout->addWidget(tabs);

    errorLabel->setStyleSheet(QStringLiteral("color: red"));
    errorLabel->setWordWrap(true);
    errorLabel->hide();
    layout->addWidget(errorLabel);

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    connect(buttons, &QDialogButtonBox::accepted, this, &ParameterDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &ParameterDialog::reject);
    layout->addWidget(buttons);
}

QWidget* ParameterDialog::createPage(ParameterSet* set)
{
    Page page{set, false, {}};
    QWidget* widget = nullptr;
    if (qel::main::PanelFactory* setFactory = set->getParameterSetPanelFactory())
        widget = setFactory->createPanel(set);
    if (widget) {
        page.setPanel = true;
        for (AbstractParameter* parameter : *set->getParameterList())
            page.fields.push_back(Field{parameter, nullptr, nullptr});
        pages.push_back(page);
        return widget;
    }
    widget = new QWidget();
    auto* form = new QFormLayout(widget);
    for (AbstractParameter* parameter : *set->getParameterList()) {
        Field field{parameter, nullptr, nullptr};
        QWidget* editor = nullptr;
        if (qel::main::ParameterPanelFactory* factory = parameter->getParameterPanelFactory())
            field.panel = factory->createPanel(parameter);
        if (field.panel) {
            editor = field.panel;
        } else {
            field.lineEdit = new QLineEdit(parameter->getDefaultText(), widget);
            editor = field.lineEdit;
        }
        editor->setToolTip(parameter->getDescription());
        form->addRow(parameter->getParameterName(), editor);
        page.fields.push_back(field);
    }
    if (set->getParameterList()->empty())
        form->addRow(new QLabel(tr("No parameters"), widget));
    pages.push_back(page);
    return widget;
}

int ParameterDialog::getCurrentSetIndex() const
{
    return tabs->currentIndex();
}

void ParameterDialog::setCurrentSetIndex(int index)
{
    tabs->setCurrentIndex(index);
}

ParameterSet* ParameterDialog::getCurrentSet() const
{
    const int index = getCurrentSetIndex();
    return index >= 0 && index < int(pages.size()) ? pages[size_t(index)].set : nullptr;
}

QString ParameterDialog::fieldText(const Field& field, bool fromParameter)
{
    if (fromParameter) // the set's own widget writes into the parameters
        return field.parameter->hasValue() ? field.parameter->toString() : field.parameter->getDefaultText();
    if (field.panel)
        return field.panel->getText();
    return field.lineEdit ? field.lineEdit->text() : QString();
}

std::vector<QString> ParameterDialog::getArguments() const
{
    std::vector<QString> arguments;
    const int index = getCurrentSetIndex();
    if (index < 0 || index >= int(pages.size()))
        return arguments;
    const Page& page = pages[size_t(index)];
    for (const Field& field : page.fields)
        arguments.push_back(fieldText(field, page.setPanel));
    return arguments;
}

QString ParameterDialog::getCommandString() const
{
    QStringList arguments;
    for (const QString& argument : getArguments())
        arguments.append(argument);
    return commandName + QLatin1Char('(') + arguments.join(QLatin1Char(',')) + QLatin1Char(')');
}

bool ParameterDialog::setArgument(int index, const QString& text)
{
    const int pageIndex = getCurrentSetIndex();
    if (pageIndex < 0 || pageIndex >= int(pages.size()))
        return false;
    const Page& page = pages[size_t(pageIndex)];
    if (index < 0 || index >= int(page.fields.size()) || !page.fields[size_t(index)].lineEdit)
        return false;
    page.fields[size_t(index)].lineEdit->setText(text);
    return true;
}

bool ParameterDialog::checkArguments(QString* error) const
{
    const int index = getCurrentSetIndex();
    if (index < 0 || index >= int(pages.size())) {
        *error = tr("There is nothing to run");
        return false;
    }
    const Page& page = pages[size_t(index)];
    const std::vector<QString> arguments = getArguments();
    for (size_t field = 0; field < page.fields.size(); ++field) {
        AbstractParameter* parameter = page.fields[field].parameter;
        if (!parameter->isCastable(arguments[field])) {
            *error = tr("'%1' is no valid value for '%2'").arg(arguments[field], parameter->getParameterName());
            return false;
        }
    }
    return true;
}

QString ParameterDialog::getError() const
{
    return lastError;
}

void ParameterDialog::accept()
{
    lastError.clear();
    if (!checkArguments(&lastError)) {
        errorLabel->setText(lastError);
        errorLabel->show();
        return;
    }
    errorLabel->clear();
    errorLabel->hide();
    QDialog::accept();
}

} // namespace gui
} // namespace qel
