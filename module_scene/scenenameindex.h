#pragma once

#include <QHash>
#include <QString>
#include <functional>
#include <vector>

namespace qel {
namespace scene {

class SceneElement;

// The scene's registry by name: which elements carry a name, and the first free number
// behind a base name, without walking the element list. An element is filed under the
// name it had when it was added or last refreshed, once per entry it has in the list.
class SceneNameIndex
{
public:
    void add(SceneElement* element);
    // Every entry of the element.
    void remove(SceneElement* element);
    void clear();
    // Files the element under its present name; false when it isn't in the index.
    bool refresh(SceneElement* element);

    bool contains(const SceneElement* element) const { return namesOf.contains(element); }
    // Entries filed under the name, in the order they were filed; null when there are none.
    const std::vector<SceneElement*>* find(const QString& name) const;
    int count(const QString& name) const;

    // The smallest counter k >= 1 for which `base_k` is not taken, where taken(name) says
    // whether a name is in use. The search starts behind the counters known to be taken,
    // so naming many elements alike costs no more than naming each once.
    int firstFreeCounter(const QString& base, const std::function<bool(const QString&)>& taken);
    // Forgets what firstFreeCounter learnt, for when `taken` changes its meaning.
    void forgetCounters() { takenBelow.clear(); }

    static QString numberedName(const QString& base, int counter);

private:
    struct Filing
    {
        QString name;
        int entries;
    };

    void unfile(SceneElement* element, const Filing& filing);
    void released(const QString& name);

    QHash<QString, std::vector<SceneElement*>> elementsByName;
    QHash<const SceneElement*, Filing> namesOf;
    // Per base name: base_1 .. base_(n-1) were all taken when last looked at.
    QHash<QString, int> takenBelow;
};

} // namespace scene
} // namespace qel
