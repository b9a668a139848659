#include "platform/cocoa/Timer.h"

#include "platform/cocoa/RunLoop.h"

namespace cocoa {

Timer::Timer(std::chrono::milliseconds interval, std::function<void()> fire)
    : m_interval(interval), m_fire(std::move(fire)) {
    setResting(false);
}

void Timer::setResting(bool resting) {
    if (resting == (m_id == 0)) return;
    if (resting) killTimer(m_id);
    m_id = resting ? 0 : startTimer(m_interval);
}

void Timer::timerEvent(QTimerEvent* /*event*/) {
    if (RunLoop::isInDefaultMode()) m_fire();
}

} // namespace cocoa
