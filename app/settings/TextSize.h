#pragma once

#include <QDBusVariant>
#include <QObject>

class QDBusPendingCallWatcher;

namespace app {

class Settings;

/// Sets the scale of the window: the user's text size times the desktop's, no less than the design's size, no
/// more than twice that, and no more than fits on the screen.
///
/// X11 desktops put their text scale into the resolution that they announce, by which the toolkit scales all
/// that is shown. On Wayland the desktop's settings portal is asked, in the background; its last answer is
/// kept, so that the next start does not show another size first.
///
/// Threads: main thread only; `settings` must outlive it.
class TextSize : public QObject {
    Q_OBJECT
public:
    /// Sets the scale; nothing is asked yet.
    explicit TextSize(Settings& settings);

    /// Where the session has such a setting: once, after the window has been shown.
    void askDesktop();
    /// To the next quarter of the design's size.
    void changeBySteps(int steps);

private:
    Q_SLOT void desktopSettingChanged(const QString& group, const QString& key, const QDBusVariant& value);
    void answered(const QDBusPendingCallWatcher& call);
    void setDesktopScale(double scale);
    void apply();

    Settings& m_settings;
    double m_desktopScale = 1.0;
};

} // namespace app
