#pragma once

#include "kernel/gui/parameterpanel.h"

#include <QString>
#include <QStringList>
#include <list>
#include <map>

class QComboBox;

namespace qel {
namespace main {

// Offers a choice from a list. Over a plain list the chosen text is the argument; over
// a map from shown name to number, the number is (entries ordered by number).
// The list or map is read, not copied: updateWidget picks up its changes.
class ComboBoxParameterPanel : public ParameterPanel
{
    Q_OBJECT

public:
    ComboBoxParameterPanel(AbstractParameter* parameter, const std::list<QString>* items, QWidget* parent = nullptr);
    ComboBoxParameterPanel(AbstractParameter* parameter, const QStringList* items, QWidget* parent = nullptr);
    ComboBoxParameterPanel(AbstractParameter* parameter, const std::map<QString, int>* values,
                           QWidget* parent = nullptr);

    QString getText() const override;
    QWidget* getEditorWidget() override;
    void updateWidget() override;

private:
    void buildLayout();
    QStringList entries() const;
    // Index of the entry named by the text or, over a map, by its number; -1 if none.
    int findEntry(const QString& text) const;

    QComboBox* comboBox;
    const std::list<QString>* items;
    const QStringList* itemList;
    const std::map<QString, int>* values;
};

} // namespace main
} // namespace qel
