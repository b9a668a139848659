#include "platform/cocoa/Timer.h"

#include "platform/cocoa/RunLoop.h"

namespace cocoa {

Timer::Timer(std::chrono::milliseconds interval, std::function<void()> fire) : m_fire(std::move(fire)) {
    startTimer(interval);
}

void Timer::timerEvent(QTimerEvent* /*event*/) {
    if (RunLoop::isInDefaultMode()) m_fire();
}

} // namespace cocoa
