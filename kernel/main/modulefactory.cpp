#include "kernel/main/modulefactory.h"

#include "kernel/log/logger.h"
#include "kernel/main/informationobject.h"

#include <algorithm>

namespace qel {
namespace main {

ModuleFactory::ModuleFactory() : information(nullptr)
{
}

ModuleFactory::~ModuleFactory()
{
    delete information;
}

void ModuleFactory::setInformationObject(InformationObject* informationObject)
{
    if (informationObject == information)
        return;
    delete information;
    information = informationObject;
}

bool ModuleFactory::registerPrimaryCommand(CommandCreator creator)
{
    if (!creator) {
        qel::log::Logger::log(0, "kernel/main/modulefactory", 32, "qel::main::ModuleFactory::registerPrimaryCommand",
                              nullptr, "No command creator given");
        return false;
    }
    if (std::find(creators.begin(), creators.end(), creator) != creators.end()) {
        qel::log::Logger::log(0, "kernel/main/modulefactory", 37, "qel::main::ModuleFactory::registerPrimaryCommand",
                              nullptr, "The command creator is already registered");
        return false;
    }
    creators.push_back(creator);
    return true;
}

} // namespace main
} // namespace qel
