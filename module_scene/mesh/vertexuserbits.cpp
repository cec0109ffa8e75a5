#include "module_scene/mesh/vertexuserbits.h"

#include <QMutex>
#include <QMutexLocker>
#include <QThread>
#include <map>

namespace qel {
namespace scene {

namespace {

const std::uint32_t FIRST_COUNTER_VALUE = 512;

QMutex& tableMutex()
{
    static QMutex mutex;
    return mutex;
}

// The caller holds tableMutex.
std::uint32_t& counterOfThisThread()
{
    static std::map<Qt::HANDLE, std::uint32_t> counters;
    return counters.emplace(QThread::currentThreadId(), FIRST_COUNTER_VALUE).first->second;
}

} // namespace

std::uint32_t VertexUserBits::newBit()
{
    QMutexLocker locker(&tableMutex());
    std::uint32_t& counter = counterOfThisThread();
    counter <<= 1;
    return counter;
}

bool VertexUserBits::deleteBit(std::uint32_t bit)
{
    QMutexLocker locker(&tableMutex());
    std::uint32_t& counter = counterOfThisThread();
    if (counter != bit)
        return false;
    counter >>= 1;
    return true;
}

std::uint32_t VertexUserBits::lastBit()
{
    QMutexLocker locker(&tableMutex());
    return counterOfThisThread();
}

} // namespace scene
} // namespace qel
