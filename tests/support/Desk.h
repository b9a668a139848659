#pragma once

#include "tests/support/DisplayServer.h"
#include "tests/support/SoundServer.h"

#include <QGuiApplication>
#include <QImage>
#include <QPoint>
#include <QProcess>
#include <QRect>
#include <QString>

#include <chrono>
#include <functional>
#include <memory>

namespace support {

/// Runs the program in a complete session of its own: virtual display and window manager, recorded sound
/// server, session bus and home. Tests send input events, and check screenshots and the recording. Positions
/// are points in the program's window. One per process.
class Desk {
public:
    /// Starts no program yet. The home has a folder "Documents".
    Desk();
    ~Desk();
    Desk(const Desk&) = delete;
    Desk& operator=(const Desk&) = delete;

    /// Starts the program and waits until its window has the focus. Throws when it does not appear.
    void start(const QString& program, const QStringList& arguments = {});
    /// True when the program has exited by itself with status 0.
    bool ended();
    bool endsWithin(std::chrono::milliseconds limit);
    void signal(int number) const;
    /// Stops and continues the sound server's process; a stopped server does not respond.
    void freezeSound(bool frozen) const { m_sound.freeze(frozen); }

    /// Positions in the program's window.
    void click(QPoint place);
    void doubleClick(QPoint place);
    void rightClick(QPoint place);
    void press(QPoint place);
    void moveTo(QPoint place);
    void release();
    /// Keys as xdotool names them: "ctrl+s", "Return".
    void key(const std::string& keys);
    void type(const std::string& text);
    /// Gives the focus to another program's window, or back.
    void turnAway();
    void turnBack();

    /// The title of the window that has the focus.
    QString activeWindow() const;
    /// A screenshot of a part of the window.
    QImage seen(const QRect& area) const;
    /// True when the last 100 ms of the recording are a pure tone of this frequency.
    bool plays(double hertz) const;
    /// Root mean square of the recorded samples for each 20 ms from frame `from` on; 1 is full scale.
    std::vector<double> loudness(std::size_t from) const;
    std::size_t recordedFrames() const { return m_sound.recorded().size() / 2; }

    /// Processes bus events until `condition` holds; false after a time limit.
    [[nodiscard]] static bool until(const std::function<bool()>& condition);

private:
    void mouse(const std::vector<std::string>& actions, QPoint place);

    SoundServer m_sound;
    DisplayServer m_display;
    QProcess m_bus;
    std::unique_ptr<QGuiApplication> m_application;
    std::unique_ptr<QWindow> m_otherWindow;
    QProcess m_program;
    std::string m_window; ///< X11 id of the program's window.
    QPoint m_origin;      ///< Position of the window on the screen.
};

} // namespace support
