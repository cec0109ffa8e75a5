#pragma once

#include "kernel/main/castclass.h"

#include <QMutex>
#include <boost/function.hpp>
#include <map>
#include <typeindex>
#include <typeinfo>

namespace qel {
namespace main {

// Knows which cast class converts the text of each parameter type. Modules may add
// their own types; QString needs none.
class CastClassManager
{
public:
    typedef boost::function<CastClass*()> Creator;

    static CastClassManager* getInstance();

    // A new cast class (reference count 0), or null for QString and unknown types.
    CastClass* createCastClassForType(const std::type_info* type) const;
    void registerCastClass(const std::type_info& type, const Creator& creator);
    bool hasCastClassForType(const std::type_info& type) const;

private:
    CastClassManager();
    void registerBuiltInTypes();

    mutable QMutex mutex;
    std::map<std::type_index, Creator> creators;
};

} // namespace main
} // namespace qel
