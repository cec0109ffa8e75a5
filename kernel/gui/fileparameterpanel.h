#pragma once

#include "kernel/gui/parameterpanel.h"

#include <boost/function.hpp>

class QFileDialog;
class QLineEdit;

namespace qel {
namespace main {

// A file name: a line edit and a button that opens the dialog the creator makes.
class FileParameterPanel : public ParameterPanel
{
    Q_OBJECT

public:
    typedef boost::function<QFileDialog*()> DialogCreator;

    FileParameterPanel(AbstractParameter* parameter, const DialogCreator& createDialog, QWidget* parent = nullptr);

    QString getText() const override;
    QWidget* getEditorWidget() override;
    void updateWidget() override;

public slots:
    void browse();

private:
    DialogCreator createDialog;
    QLineEdit* lineEdit;
};

} // namespace main
} // namespace qel
