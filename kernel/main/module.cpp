#include "kernel/main/module.h"

#include "kernel/log/logger.h"
#include "kernel/main/command.h"
#include "kernel/main/commandprocessor.h"
#include "kernel/main/informationobject.h"
#include "kernel/main/overseer.h"

namespace qel {
namespace main {

Module::Module(InformationObject* information) : information(information)
{
}

Module::~Module() = default;

QString Module::getName() const
{
    return information ? information->getName() : QString();
}

void Module::registerCommand(Command* command)
{
    if (!command)
        return;
    const QString name = command->getName();
    if (!Overseer::getInstance()->getCommandProcessor()->registerCommand(command)) {
        qel::log::Logger::log(1000, "kernel/main/module", 31, "qel::main::Module::registerCommand", nullptr,
                              "Module '%s': command '%s' was refused and is dropped", qPrintable(getName()),
                              qPrintable(name));
        delete command;
        return;
    }
    commandNames.push_back(name);
}

const Module::GUILocations& Module::getGUIDescriptions() const
{
    return guiLocations;
}

bool Module::isGUIModule()
{
    return false;
}

void Module::load(StatusFunction)
{
}

void Module::doShutdownActions()
{
}

} // namespace main
} // namespace qel
