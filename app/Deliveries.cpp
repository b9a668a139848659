#include "app/Deliveries.h"

#include "core/background/Workers.h"

#include <algorithm>
#include <utility>

namespace app {
namespace {

constexpr qint64 batchMs = 4;

} // namespace

Deliveries::Deliveries(Workers& workers, std::function<void()> delivered)
    : m_workers(workers), m_delivered(std::move(delivered)) {
    m_sinceLast.start();
    m_timer.setSingleShot(true);
    m_timer.setTimerType(Qt::PreciseTimer);
    m_timer.callOnTimeout([this] { deliver(); });
    m_workers.setWake([this] {
        QMetaObject::invokeMethod(
            this, [this] { deliverSoon(); }, Qt::QueuedConnection);
    });
}

Deliveries::~Deliveries() {
    m_workers.setWake(nullptr);
}

void Deliveries::deliverSoon() {
    const qint64 wait = batchMs - m_sinceLast.elapsed();
    wait <= 0 ? deliver() : m_timer.start(static_cast<int>(wait));
}

void Deliveries::deliver() {
    m_sinceLast.restart();
    m_workers.deliver();
    m_delivered();
}

} // namespace app
