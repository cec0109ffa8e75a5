#include "kernel/main/commanddescriptor.h"

namespace qel {
namespace main {

CommandDescriptor::CommandDescriptor(const QString& name, const QString& description)
    : name(name), description(description)
{
}

} // namespace main
} // namespace qel
