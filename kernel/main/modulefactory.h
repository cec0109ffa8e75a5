#pragma once

#include <vector>

namespace qel {
namespace main {

class Command;
class InformationObject;
class Module;

// What a module library hands the host through its exported getFactory(): the module's
// information, the creators of its primary commands (registered by static initialisers
// at library load) and the module itself.
class ModuleFactory
{
public:
    typedef Command* (*CommandCreator)();

    ModuleFactory();
    virtual ~ModuleFactory();

    virtual Module* createModule() = 0;

    InformationObject* getInformationObject() const { return information; }
    // Takes over the object; a previous one is deleted.
    void setInformationObject(InformationObject* informationObject);

    // Stores the creator; the host calls it when the module is built. A null or already
    // known creator is refused.
    bool registerPrimaryCommand(CommandCreator creator);
    const std::vector<CommandCreator>& getCommandCreators() const { return creators; }

private:
    ModuleFactory(const ModuleFactory&) = delete;
    ModuleFactory& operator=(const ModuleFactory&) = delete;

    InformationObject* information;
    std::vector<CommandCreator> creators;
};

} // namespace main
} // namespace qel
