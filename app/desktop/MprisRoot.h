#pragma once

#include <QDBusAbstractAdaptor>
#include <QStringList>

class FenAppDelegate;

namespace app {

/// The program itself on the bus. Its properties never change.
class MprisRoot : public QDBusAbstractAdaptor {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.mpris.MediaPlayer2")
    Q_PROPERTY(bool CanQuit READ yes)
    Q_PROPERTY(bool CanRaise READ yes)
    Q_PROPERTY(bool HasTrackList READ no)
    Q_PROPERTY(QString Identity READ identity)
    Q_PROPERTY(QString DesktopEntry READ desktopEntry)
    Q_PROPERTY(QStringList SupportedUriSchemes READ uriSchemes)
    Q_PROPERTY(QStringList SupportedMimeTypes READ mimeTypes)
public:
    MprisRoot(QObject& service, FenAppDelegate& delegate);

    static bool yes() { return true; }
    static bool no() { return false; }
    static QString identity();
    static QString desktopEntry();
    static QStringList uriSchemes();
    static QStringList mimeTypes();

public Q_SLOTS: // what the bus may call
    void Raise();
    void Quit();

private:
    FenAppDelegate& m_delegate;
};

} // namespace app
