#pragma once

#include <QDBusAbstractAdaptor>
#include <QStringList>
#include <QTimer>
#include <QVariantMap>

#include <functional>
#include <string>
#include <vector>

class FenAppDelegate;

namespace app {

/// The interface org.freedesktop.Application, by which other starts of the program, desktops and launchers
/// control the running one. Calls received before the window exists are queued until it does.
///
/// Threads: main thread only.
class ApplicationService : public QDBusAbstractAdaptor {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Application")
public:
    explicit ApplicationService(QObject& service);

    /// Carries out what has been asked for, and what will be. The delegate must outlive it.
    void serve(FenAppDelegate& delegate);

    /// The key of `platformData` under which Wayland's token is, and that of the X11 startup id.
    static const QString activationToken;
    static const QString startupId;

public Q_SLOTS: // what the bus may call
    /// Raises the window.
    void Activate(const QVariantMap& platformData);
    /// Appends files, folders, playlists and addresses, and plays the first entry. Names of files that are no
    /// UTF-8 come percent-encoded.
    void Open(const QStringList& uris, const QVariantMap& platformData);
    /// `play-pause`, `next`, `previous`, `stop`, and `volume` with a text like `50`, `+5` or `-5`, in
    /// percent. Any other is ignored.
    void ActivateAction(const QString& action, const QVariantList& parameter,
                        const QVariantMap& platformData);

private:
    void run(std::function<void()> task);
    void openWaiting();

    FenAppDelegate* m_delegate = nullptr; ///< Null before `serve`.
    std::vector<std::function<void()>> m_tasks;
    std::vector<std::string> m_sources; ///< To be opened, as soon as nothing else is being worked on.
    QTimer m_opening;
};

} // namespace app
