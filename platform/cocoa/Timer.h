#pragma once

#include <QObject>

#include <chrono>
#include <functional>

namespace cocoa {

/// Calls `fire` again and again on the main thread, first one interval from now, for as long as the object
/// lives, but while it rests. Ticks that fall due while the run loop is not in its default mode (RunLoop) are
/// left out.
class Timer : public QObject {
    Q_OBJECT
public:
    Timer(std::chrono::milliseconds interval, std::function<void()> fire);

    /// A timer at rest does not wake the processor; one that goes on begins with a whole interval.
    void setResting(bool resting);

protected:
    void timerEvent(QTimerEvent* event) override;

private:
    std::chrono::milliseconds m_interval;
    std::function<void()> m_fire;
    int m_id = 0; ///< Of the running timer; 0 at rest.
};

} // namespace cocoa
