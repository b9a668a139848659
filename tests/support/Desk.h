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

/// A person's desk: a screen with a window manager, a sound server whose output is recorded, a session bus
/// and a home of their own, and on them one program, used by hand (real input events), eye and ear. Places
/// are points of the program's window. Make one a process.
class Desk {
public:
    /// Nothing runs yet. The home has a folder "Documents".
    Desk();
    ~Desk();
    Desk(const Desk&) = delete;
    Desk& operator=(const Desk&) = delete;

    /// Starts the program and waits until its window has the keyboard. Throws when it does not come.
    void start(const QString& program, const QStringList& arguments = {});
    /// Whether the program has ended by itself, well.
    bool ended();
    bool endsWithin(std::chrono::milliseconds limit);
    void signal(int number) const;
    /// While it is frozen, the sound server answers nothing.
    void freezeSound(bool frozen) const { m_sound.freeze(frozen); }

    /// In the window of the program.
    void click(QPoint place);
    void doubleClick(QPoint place);
    void rightClick(QPoint place);
    void press(QPoint place);
    void moveTo(QPoint place);
    void release();
    /// Keys as xdotool names them: "ctrl+s", "Return".
    void key(const std::string& keys);
    void type(const std::string& text);
    /// Gives the keyboard to another program's window, or back.
    void turnAway();
    void turnBack();

    /// The title of the window that has the keyboard.
    QString activeWindow() const;
    /// What the screen shows at this place of the window.
    QImage seen(const QRect& area) const;
    /// Whether the sound of the last tenth of a second is a tone of this pitch, and nothing else.
    bool hears(double hertz) const;
    /// Root mean square of the recorded samples, from frame `from` on, one value for each 20 ms; full
    /// scale 1.
    std::vector<double> loudness(std::size_t from) const;
    std::size_t recordedFrames() const { return m_sound.recorded().size() / 2; }

    /// Serves what happens on the bus until `condition` holds; false when it does not within a limit.
    [[nodiscard]] static bool until(const std::function<bool()>& condition);

private:
    void mouse(const std::vector<std::string>& actions, QPoint place);

    SoundServer m_sound;
    DisplayServer m_display;
    QProcess m_bus;
    std::unique_ptr<QGuiApplication> m_application;
    std::unique_ptr<QWindow> m_otherWindow;
    QProcess m_program;
    std::string m_window; ///< The X server's number for the program's window.
    QPoint m_origin;      ///< Of the window, on the screen.
};

} // namespace support
