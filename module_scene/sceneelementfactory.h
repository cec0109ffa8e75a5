#pragma once

#include <QMutex>
#include <QString>
#include <QStringList>
#include <map>

namespace qel {
namespace scene {

class SceneElement;

// Makes an empty element from its type key (what loading a project needs). Created at
// its first use, so that the Register statics of the element types may run at any time
// during library load.
class SceneElementFactory
{
public:
    typedef SceneElement* (*Creator)();

    // Registers a type for the life of the static it is (a static beside each element type).
    class Register
    {
    public:
        // The key must outlive the Register object.
        Register(const QString& key, Creator creator);
        ~Register();
        Register(const Register&) = delete;
        Register& operator=(const Register&) = delete;

    private:
        const QString* key;
    };

    static SceneElementFactory* getInstance();

    bool registerElement(const QString& key, Creator creator);
    bool unregisterElement(const QString& key);
    bool isRegistered(const QString& key) const;
    // A new element, or null for an unknown key.
    SceneElement* createElement(const QString& key) const;
    QStringList getRegisteredKeys() const;

private:
    SceneElementFactory() = default;

    mutable QMutex mutex;
    std::map<QString, Creator> creators;
};

} // namespace scene
} // namespace qel
