#include "app/desktop/MprisRoot.h"

#include "app/FenAppDelegate.h"
#include "app/desktop/raiseWindow.h"
#include "controls/CustomWindow.h"

#include <QGuiApplication>

namespace app {

MprisRoot::MprisRoot(QObject& service, FenAppDelegate& delegate)
    : QDBusAbstractAdaptor(&service), m_delegate(delegate) {}

QString MprisRoot::identity() {
    return QGuiApplication::applicationDisplayName();
}

QString MprisRoot::desktopEntry() {
    return QGuiApplication::desktopFileName();
}

QStringList MprisRoot::uriSchemes() {
    return {QStringLiteral("file"), QStringLiteral("http"), QStringLiteral("https")};
}

/// In the old spellings and the new ones, which desktops mix.
QStringList MprisRoot::mimeTypes() {
    return {QStringLiteral("audio/flac"),      QStringLiteral("audio/x-flac"),
            QStringLiteral("audio/mpeg"),      QStringLiteral("audio/mp2"),
            QStringLiteral("audio/mp3"),       QStringLiteral("audio/mp4"),
            QStringLiteral("audio/x-m4a"),     QStringLiteral("audio/aac"),
            QStringLiteral("audio/ogg"),       QStringLiteral("audio/x-vorbis+ogg"),
            QStringLiteral("audio/opus"),      QStringLiteral("audio/x-opus+ogg"),
            QStringLiteral("audio/aiff"),      QStringLiteral("audio/x-aiff"),
            QStringLiteral("audio/wav"),       QStringLiteral("audio/x-wav"),
            QStringLiteral("audio/vnd.wave"),  QStringLiteral("audio/x-wavpack"),
            QStringLiteral("audio/x-ape"),     QStringLiteral("audio/mpegurl"),
            QStringLiteral("audio/x-mpegurl"), QStringLiteral("application/vnd.tulplayer.playlist+json")};
}

void MprisRoot::Raise() {
    raiseWindow(*m_delegate.window);
}

void MprisRoot::Quit() {
    FenAppDelegate::quit();
}

} // namespace app
