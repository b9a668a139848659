#pragma once

#include <QImage>
#include <QString>

namespace cocoa {

/// What a desktop notification shows. Plain texts; a null image shows none.
struct UserNotification {
    QString title;
    QString informativeText;
    QImage contentImage;
};

} // namespace cocoa
