#pragma once

#include <QElapsedTimer>
#include <QString>
#include <QTimer>

#include <cstdint>

class FenAppDelegate;

namespace app {

/// The unattended run: prints a line for each track, takes a screenshot, and quits when the list has been
/// played once, or after 30 seconds.
///
/// Threads: main thread only; the delegate must outlive it.
class DemoRun {
public:
    DemoRun(FenAppDelegate& delegate, QString screenshot);

private:
    void look();
    void announceTrack();
    void takeScreenshot();
    void finish();

    FenAppDelegate& m_delegate;
    QString m_screenshot;
    QTimer m_polling;
    QElapsedTimer m_running;
    std::uint32_t m_lastHandle = 0;
    int m_started = 0;
    bool m_photographed = false;
};

} // namespace app
