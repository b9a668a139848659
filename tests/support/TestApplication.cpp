#include "tests/support/TestApplication.h"

#include <QEventLoop>
#include <QImage>

#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <thread>

namespace support {

namespace {

/// Ends the application while the toolkit's own statics are still alive.
class ApplicationEnvironment : public testing::Environment {
public:
    QApplication& application() {
        if (m_application == nullptr) {
            setenv("QT_QPA_PLATFORM", "offscreen", 1);
            m_application = std::make_unique<QApplication>(m_count, m_arguments);
        }
        return *m_application;
    }
    void TearDown() override { m_application.reset(); }

private:
    int m_count = 1;
    char m_name[5] = "test";
    char* m_arguments[2] = {m_name, nullptr};
    std::unique_ptr<QApplication> m_application;
};

/// Owned by the test framework.
ApplicationEnvironment* const environment = [] {
    auto made = std::make_unique<ApplicationEnvironment>();
    ApplicationEnvironment* const known = made.get();
    testing::AddGlobalTestEnvironment(made.release());
    return known;
}();

} // namespace

QApplication& offscreenApplication() {
    return environment->application();
}

bool runUntil(const std::function<bool()>& condition, std::chrono::milliseconds limit) {
    const auto end = std::chrono::steady_clock::now() + limit;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end) return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
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
