#include "platform/cocoa/Log.h"

#include <QString>

#include <syslog.h>

namespace cocoa {

void log(const QString& message) {
    static const bool opened = [] {
        openlog("tulplayer", LOG_PERROR | LOG_PID, LOG_USER);
        return true;
    }();
    if (opened) syslog(LOG_NOTICE, "%s", message.toUtf8().constData());
}

} // namespace cocoa
