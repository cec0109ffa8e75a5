#pragma once

#include <QString>

namespace qel {
namespace main {

// Name and help text of a command. The name is the lower-case word of the command string.
class CommandDescriptor
{
public:
    CommandDescriptor(const QString& name, const QString& description);
    virtual ~CommandDescriptor() = default;

    const QString& getName() const { return name; }
    const QString& getDescription() const { return description; }

private:
    QString name;
    QString description;
};

} // namespace main
} // namespace qel
