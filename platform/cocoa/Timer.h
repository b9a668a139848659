#pragma once

#include <QObject>

#include <chrono>
#include <functional>

namespace cocoa {

/// Calls `fire` on the main thread once per interval while the object lives, except while it rests. Ticks
/// that are due while the run loop is not in its default mode (RunLoop) are skipped.
class Timer : public QObject {
    Q_OBJECT
public:
    Timer(std::chrono::milliseconds interval, std::function<void()> fire);

    /// A resting timer does not wake the processor. After resting the first tick comes after a whole
    /// interval.
    void setResting(bool resting);

protected:
    void timerEvent(QTimerEvent* event) override;

private:
    std::chrono::milliseconds m_interval;
    std::function<void()> m_fire;
    int m_id = 0; ///< Of the running timer; 0 at rest.
};

} // namespace cocoa
