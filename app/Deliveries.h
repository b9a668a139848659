#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>

#include <functional>

class Workers;

namespace app {

/// Delivers the workers' results to the main thread: single ones at once, many in batches of a few
/// milliseconds.
///
/// Threads: main thread only; workers wake it through the event loop. To be destroyed before the workers.
class Deliveries : public QObject {
public:
    /// `delivered` is called after each delivery.
    Deliveries(Workers& workers, std::function<void()> delivered);
    ~Deliveries() override;

private:
    void deliverSoon();
    void deliver();

    Workers& m_workers;
    std::function<void()> m_delivered;
    QTimer m_timer;
    QElapsedTimer m_sinceLast;
};

} // namespace app
