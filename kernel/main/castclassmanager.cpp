#include "kernel/main/castclassmanager.h"

#include "kernel/main/boolcastclass.h"
#include "kernel/main/doublecastclass.h"
#include "kernel/main/floatcastclass.h"
#include "kernel/main/integercastclass.h"
#include "kernel/main/qcolorcastclass.h"
#include "kernel/main/qstringvectorcastclass.h"
#include "kernel/main/unsignedintegercastclass.h"
#include "kernel/main/vectorcastclass.h"

#include <QColor>
#include <QMutexLocker>
#include <QString>
#include <vector>

namespace qel {
namespace main {

namespace {

template <class C>
CastClass* make()
{
    return new C();
}

} // namespace

CastClassManager* CastClassManager::getInstance()
{
    static CastClassManager instance;
    return &instance;
}

CastClassManager::CastClassManager()
{
    registerBuiltInTypes();
}

void CastClassManager::registerBuiltInTypes()
{
    creators[typeid(int)] = &make<IntegerCastClass>;
    creators[typeid(unsigned int)] = &make<UnsignedIntegerCastClass>;
    creators[typeid(double)] = &make<DoubleCastClass>;
    creators[typeid(float)] = &make<FloatCastClass>;
    creators[typeid(bool)] = &make<BoolCastClass>;
    creators[typeid(QColor)] = &make<QColorCastClass>;
    creators[typeid(std::vector<QString>)] = &make<QStringVectorCastClass>;
    creators[typeid(std::vector<int>)] = &make<VectorCastClass<int>>;
    creators[typeid(std::vector<unsigned int>)] = &make<VectorCastClass<unsigned int>>;
    creators[typeid(std::vector<double>)] = &make<VectorCastClass<double>>;
    creators[typeid(std::vector<float>)] = &make<VectorCastClass<float>>;
}

CastClass* CastClassManager::createCastClassForType(const std::type_info* type) const
{
    if (!type)
        return nullptr;
    Creator creator;
    {
        QMutexLocker locker(&mutex);
        auto found = creators.find(std::type_index(*type));
        if (found == creators.end())
            return nullptr;
        creator = found->second;
    }
    return creator();
}

void CastClassManager::registerCastClass(const std::type_info& type, const Creator& creator)
{
    QMutexLocker locker(&mutex);
    creators[std::type_index(type)] = creator;
}

bool CastClassManager::hasCastClassForType(const std::type_info& type) const
{
    QMutexLocker locker(&mutex);
    return creators.count(std::type_index(type)) > 0;
}

} // namespace main
} // namespace qel
