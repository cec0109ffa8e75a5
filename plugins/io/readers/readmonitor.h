#pragma once

#include <QtGlobal>
#include <boost/function.hpp>

namespace qel {
namespace io {
namespace readers {

// Tells the owner of a read how far it got and lets it stop the read. The callback gets
// the bytes consumed and the total; it answers false to stop. It is called only when the
// read has advanced by a noticeable step, so readers may report as often as they like.
class ReadMonitor
{
public:
    typedef boost::function<bool(qint64 done, qint64 total)> Callback;

    explicit ReadMonitor(qint64 total = 0, const Callback& callback = Callback());

    void setTotal(qint64 total);
    qint64 getTotal() const { return total; }
    // False once the callback has asked to stop; stays false from then on.
    bool advance(qint64 done);
    bool isStopped() const { return stopped; }

private:
    Callback callback;
    qint64 total;
    qint64 step;
    qint64 nextReport;
    bool stopped;
};

} // namespace readers
} // namespace io
} // namespace qel
