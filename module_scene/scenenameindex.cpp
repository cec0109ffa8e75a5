#include "module_scene/scenenameindex.h"

#include "module_scene/sceneelement.h"

#include <algorithm>

namespace qel {
namespace scene {

void SceneNameIndex::add(SceneElement* element)
{
    refresh(element);
    const QString name = element->getName();
    elementsByName[name].push_back(element);
    auto filing = namesOf.find(element);
    if (filing == namesOf.end())
        namesOf.insert(element, Filing{name, 1});
    else
        ++filing->entries;
}

void SceneNameIndex::remove(SceneElement* element)
{
    auto filing = namesOf.find(element);
    if (filing == namesOf.end())
        return;
    const Filing removed = *filing;
    namesOf.erase(filing);
    unfile(element, removed);
}

void SceneNameIndex::clear()
{
    elementsByName.clear();
    namesOf.clear();
    takenBelow.clear();
}

bool SceneNameIndex::refresh(SceneElement* element)
{
    auto filing = namesOf.find(element);
    if (filing == namesOf.end())
        return false;
    const QString name = element->getName();
    if (filing->name == name)
        return true;
    const Filing old = *filing;
    filing->name = name;
    unfile(element, old);
    elementsByName[name].insert(elementsByName[name].end(), old.entries, element);
    return true;
}

const std::vector<SceneElement*>* SceneNameIndex::find(const QString& name) const
{
    auto found = elementsByName.constFind(name);
    return found == elementsByName.constEnd() ? nullptr : &found.value();
}

int SceneNameIndex::count(const QString& name) const
{
    const std::vector<SceneElement*>* elements = find(name);
    return elements ? static_cast<int>(elements->size()) : 0;
}

int SceneNameIndex::firstFreeCounter(const QString& base, const std::function<bool(const QString&)>& taken)
{
    int counter = takenBelow.value(base, 1);
    while (taken(numberedName(base, counter)))
        ++counter;
    takenBelow.insert(base, counter);
    return counter;
}

QString SceneNameIndex::numberedName(const QString& base, int counter)
{
    return base + QLatin1Char('_') + QString::number(counter);
}

void SceneNameIndex::unfile(SceneElement* element, const Filing& filing)
{
    auto entries = elementsByName.find(filing.name);
    if (entries != elementsByName.end()) {
        std::vector<SceneElement*>& list = entries.value();
        list.erase(std::remove(list.begin(), list.end(), element), list.end());
        if (list.empty())
            elementsByName.erase(entries);
    }
    released(filing.name);
}

// A name that goes out of use may be a counter below what firstFreeCounter remembers for
// its base: the search for that base starts there again.
void SceneNameIndex::released(const QString& name)
{
    const int separator = name.lastIndexOf(QLatin1Char('_'));
    if (separator < 0)
        return;
    const QString suffix = name.mid(separator + 1);
    bool isNumber = false;
    const int counter = suffix.toInt(&isNumber);
    if (!isNumber || counter < 1 || QString::number(counter) != suffix)
        return;
    auto known = takenBelow.find(name.left(separator));
    if (known != takenBelow.end() && known.value() > counter)
        known.value() = counter;
}

} // namespace scene
} // namespace qel
