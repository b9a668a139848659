#include "tests/support/TestApplication.h"

#include <QEventLoop>
#include <QImage>

#include <cstdlib>

namespace support {

QApplication& offscreenApplication() {
    static char name[] = "test";
    static char* arguments[] = {name, nullptr};
    static int count = 1;
    static QApplication application = [] {
        setenv("QT_QPA_PLATFORM", "offscreen", 1);
        return QApplication(count, arguments);
    }();
    return application;
}

bool runUntil(const std::function<bool()>& condition, std::chrono::milliseconds limit) {
    const auto end = std::chrono::steady_clock::now() + limit;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end) return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    return true;
}

QImage picture(QWidget& widget, double scale) {
    QImage image((QSizeF(widget.size()) * scale).toSize(), QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(scale);
    image.fill(Qt::transparent);
    widget.render(&image, {}, {}, QWidget::DrawChildren);
    return image;
}

} // namespace support
