#pragma once

#include <QObject>

#include <chrono>
#include <functional>

namespace cocoa {

/// Calls `fire` again and again on the main thread, first one interval from now, for as long as the object
/// lives. Ticks that fall due while the run loop is not in its default mode (RunLoop) are left out.
class Timer : public QObject {
    Q_OBJECT
public:
    Timer(std::chrono::milliseconds interval, std::function<void()> fire);

protected:
    void timerEvent(QTimerEvent* event) override;

private:
    std::function<void()> m_fire;
};

} // namespace cocoa
