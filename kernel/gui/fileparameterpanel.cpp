#include "kernel/gui/fileparameterpanel.h"

#include <QFileDialog>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QToolButton>
#include <memory>

namespace qel {
namespace main {

FileParameterPanel::FileParameterPanel(AbstractParameter* parameter, const DialogCreator& createDialog,
                                       QWidget* parent)
    : ParameterPanel(parameter, parent), createDialog(createDialog), lineEdit(new QLineEdit(this))
{
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(lineEdit);
    auto* button = new QToolButton(this);
    button->setText(QStringLiteral("..."));
    layout->addWidget(button);
    connect(button, &QToolButton::clicked, this, &FileParameterPanel::browse);
    updateWidget();
}

void FileParameterPanel::browse()
{
    if (!createDialog)
        return;
    std::unique_ptr<QFileDialog> dialog(createDialog());
    if (!dialog)
        return;
    if (dialog->exec() == QDialog::Accepted && !dialog->selectedFiles().isEmpty())
        lineEdit->setText(dialog->selectedFiles().first());
}

QString FileParameterPanel::getText() const
{
    return lineEdit->text();
}

QWidget* FileParameterPanel::getEditorWidget()
{
    return lineEdit;
}

void FileParameterPanel::updateWidget()
{
    lineEdit->setText(getInitialText());
}

} // namespace main
} // namespace qel
