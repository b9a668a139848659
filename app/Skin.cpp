#include "app/Skin.h"

#include <QFile>
#include <QWidget>

namespace app {

void dressInSkin(QWidget& widget) {
    static const QString style = [] {
        QFile file(QStringLiteral(":/style/skin.qss"));
        return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
    }();
    widget.setStyleSheet(style);
}

} // namespace app
