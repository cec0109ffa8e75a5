#include "kernel/util/zmemorymanaged.h"

#include <cxxabi.h>
#include <cstdlib>
#include <memory>

namespace qel {
namespace util {

std::string demangledTypeName(const std::type_info& type)
{
    int status = 0;
    std::unique_ptr<char, void (*)(void*)> name(abi::__cxa_demangle(type.name(), nullptr, nullptr, &status), std::free);
    return status == 0 && name ? std::string(name.get()) : std::string(type.name());
}

} // namespace util
} // namespace qel
