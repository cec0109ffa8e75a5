#pragma once

#include <QDialog>
#include <QString>
#include <vector>

class QLabel;
class QLineEdit;
class QTabWidget;

namespace qel {
namespace main {
class AbstractParameter;
class Command;
class ParameterPanel;
class ParameterSet;
} // namespace main

namespace gui {

// The generic dialog of a command: one page per parameter set, with a line edit per
// parameter unless the parameter's panel factory gives a widget, or one widget for the
// whole set from the set's panel factory. Accepting it checks the arguments of the
// shown page and yields the command string.
class ParameterDialog : public QDialog
{
    Q_OBJECT

public:
    ParameterDialog(qel::main::Command* command, const std::vector<qel::main::ParameterSet*>& sets,
                    QWidget* parent = nullptr);

    int getSetCount() const { return int(pages.size()); }
    int getCurrentSetIndex() const;
    void setCurrentSetIndex(int index);
    qel::main::ParameterSet* getCurrentSet() const;

    // The arguments of the current page, as they go into the command string.
    std::vector<QString> getArguments() const;
    // name(argument,argument,...)
    QString getCommandString() const;
    // Sets the text of a line edit of the current page; false if that field has none.
    bool setArgument(int index, const QString& text);
    // Why the last accept was refused; empty if it wasn't.
    QString getError() const;

public slots:
    // Stays open, with the reason shown, while an argument doesn't fit its parameter.
    void accept() override;

private:
    struct Field
    {
        qel::main::AbstractParameter* parameter;
        QLineEdit* lineEdit;
        qel::main::ParameterPanel* panel;
    };
    struct Page
    {
        qel::main::ParameterSet* set;
        bool setPanel;
        std::vector<Field> fields;
    };

    QWidget* createPage(qel::main::ParameterSet* set);
    static QString fieldText(const Field& field, bool fromParameter);
    bool checkArguments(QString* error) const;

    QString commandName;
    std::vector<Page> pages;
    QTabWidget* tabs;
    QLabel* errorLabel;
    QString lastError;
};

} // namespace gui
} // namespace qel
