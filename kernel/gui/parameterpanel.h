#pragma once

#include <QString>
#include <QWidget>

namespace qel {
namespace main {

class AbstractParameter;

// A widget that edits one parameter of a command in a parameter dialog. Its text is
// the argument as it goes into the command string.
class ParameterPanel : public QWidget
{
    Q_OBJECT

public:
    explicit ParameterPanel(AbstractParameter* parameter, QWidget* parent = nullptr);
    ~ParameterPanel() override;

    AbstractParameter* getParameter() const { return parameter; }

    // The argument text the panel shows now.
    virtual QString getText() const = 0;
    // The widget that takes the input (for focus and labels); the panel itself by default.
    virtual QWidget* getEditorWidget();
    // Casts the shown text into the parameter; false, and the parameter unchanged, if it can't.
    virtual bool confirmParameter();
    // Edits another parameter from now on and shows its GUI default.
    virtual void setParameter(AbstractParameter* newParameter);
    // Re-reads what the panel shows from its source.
    virtual void updateWidget();

    // Makes every live panel re-read its source; on the application thread only.
    static void updateAllPanels();

protected:
    // The parameter's GUI default, or else its value.
    QString getInitialText() const;

private:
    AbstractParameter* parameter;
};

} // namespace main
} // namespace qel
