#pragma once

#include "kernel/main/menuandtoolbarmanager.h"

#include <QObject>
#include <QString>
#include <boost/function.hpp>
#include <map>
#include <vector>

namespace qel {
namespace main {

class Command;
class InformationObject;

// A module as the host sees it: made by its factory, it registers its commands, tells
// where its menus, toolbars and settings pages go, does its start-up work in load()
// and its last work in doShutdownActions().
class Module : public QObject
{
    Q_OBJECT

public:
    typedef std::map<QString, MenuAndToolbarManager::Position> Positions;
    // GUI flag (1 menu, 2 toolbar, 8 settings page) -> translated name -> position.
    typedef std::map<int, Positions> GUILocations;
    typedef boost::function<void(const QString&)> StatusFunction;

    // The information object stays its factory's.
    explicit Module(InformationObject* information);
    ~Module() override;

    // Hands the prototype to the host's command processor, which takes it over; a command
    // the processor refuses (a second one of that name) is deleted.
    virtual void registerCommand(Command* command);
    virtual const GUILocations& getGUIDescriptions() const;
    // Whether the module brings a user interface of its own.
    virtual bool isGUIModule();
    // Start-up work, after the commands are registered; reports progress through status.
    virtual void load(StatusFunction status);
    virtual void doShutdownActions();

    InformationObject* getInformationObject() const { return information; }
    QString getName() const;
    // Names of the commands registered through this module, in registration order.
    const std::vector<QString>& getCommands() const { return commandNames; }

protected:
    GUILocations guiLocations;

private:
    InformationObject* information;
    std::vector<QString> commandNames;
};

} // namespace main
} // namespace qel
