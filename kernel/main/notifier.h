#pragma once

#include <QObject>

namespace qel {
namespace main {

// Base of the objects that tell open parameter panels that their sources changed.
// May be used from any thread: the panels are refreshed on the application thread.
class Notifier : public QObject
{
    Q_OBJECT

public:
    explicit Notifier(QObject* parent = nullptr);
    ~Notifier() override;

    // Refreshes whatever the subclass serves, then the panels.
    virtual void notify();

signals:
    void updated();

protected:
    // Makes the live parameter panels re-read their sources, then emits updated().
    void update();

private:
    void updateOnApplicationThread();
};

} // namespace main
} // namespace qel
