#include "kernel/gui/comboboxparameterpanel.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QSignalBlocker>
#include <algorithm>
#include <utility>
#include <vector>

namespace qel {
namespace main {

ComboBoxParameterPanel::ComboBoxParameterPanel(AbstractParameter* parameter, const std::list<QString>* items,
                                               QWidget* parent)
    : ParameterPanel(parameter, parent), comboBox(nullptr), items(items), itemList(nullptr), values(nullptr)
{
    buildLayout();
}

ComboBoxParameterPanel::ComboBoxParameterPanel(AbstractParameter* parameter, const QStringList* items, QWidget* parent)
    : ParameterPanel(parameter, parent), comboBox(nullptr), items(nullptr), itemList(items), values(nullptr)
{
    buildLayout();
}

ComboBoxParameterPanel::ComboBoxParameterPanel(AbstractParameter* parameter, const std::map<QString, int>* values,
                                               QWidget* parent)
    : ParameterPanel(parameter, parent), comboBox(nullptr), items(nullptr), itemList(nullptr), values(values)
{
    buildLayout();
}

void ComboBoxParameterPanel::buildLayout()
{
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    comboBox = new QComboBox(this);
    layout->addWidget(comboBox);
    updateWidget();
    const int initial = findEntry(getInitialText());
    if (initial >= 0)
        comboBox->setCurrentIndex(initial);
}

QStringList ComboBoxParameterPanel::entries() const
{
    QStringList names;
    if (items) {
        for (const QString& item : *items)
            names.append(item);
    } else if (itemList) {
        names = *itemList;
    } else if (values) {
        std::vector<std::pair<int, QString>> byNumber;
        for (const auto& entry : *values)
            byNumber.emplace_back(entry.second, entry.first);
        std::stable_sort(byNumber.begin(), byNumber.end(),
                         [](const std::pair<int, QString>& a, const std::pair<int, QString>& b) { return a.first < b.first; });
        for (const auto& entry : byNumber)
            names.append(entry.second);
    }
    return names;
}

int ComboBoxParameterPanel::findEntry(const QString& text) const
{
    const int byName = comboBox->findText(text);
    if (byName >= 0 || !values)
        return byName;
    bool isNumber = false;
    const int number = text.toInt(&isNumber);
    if (!isNumber)
        return -1;
    for (const auto& entry : *values) {
        if (entry.second == number)
            return comboBox->findText(entry.first);
    }
    return -1;
}

void ComboBoxParameterPanel::updateWidget()
{
    const QString current = comboBox->currentText();
    const QSignalBlocker blocker(comboBox);
    comboBox->clear();
    comboBox->addItems(entries());
    const int kept = comboBox->findText(current);
    if (kept >= 0)
        comboBox->setCurrentIndex(kept);
}

QString ComboBoxParameterPanel::getText() const
{
    const QString shown = comboBox->currentText();
    if (!values)
        return shown;
    const auto entry = values->find(shown);
    return entry == values->end() ? QString() : QString::number(entry->second);
}

QWidget* ComboBoxParameterPanel::getEditorWidget()
{
    return comboBox;
}

} // namespace main
} // namespace qel
