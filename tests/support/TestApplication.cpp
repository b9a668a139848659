#include "tests/support/TestApplication.h"

#include "tests/support/DisplayServer.h"

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
    QApplication& application(bool onScreen) {
        if (m_application != nullptr) return *m_application;
        if (onScreen) m_display = std::make_unique<DisplayServer>();
        if (!onScreen) setenv("QT_QPA_PLATFORM", "offscreen", 1);
        m_application = std::make_unique<QApplication>(m_count, m_arguments);
        return *m_application;
    }
    void TearDown() override {
        m_application.reset();
        m_display.reset();
    }

private:
    int m_count = 1;
    char m_name[5] = "test";
    char* m_arguments[2] = {m_name, nullptr};
    std::unique_ptr<DisplayServer> m_display;
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
    return environment->application(false);
}

QApplication& onScreenApplication() {
    return environment->application(true);
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

std::string colours(const QImage& picture, int line) {
    const auto letterAt = [&](int x) {
        const QColor color = picture.pixelColor(x, line);
        if (color.alpha() == 0) return '.';
        if (color == QColor(Qt::red)) return 'r';
        if (color == QColor(Qt::green)) return 'g';
        return color == QColor(Qt::blue) ? 'b' : '?';
    };
    std::string runs;
    for (int x = 0, end = 0; x < picture.width(); x = end) {
        while (end < picture.width() && letterAt(end) == letterAt(x))
            ++end;
        runs += std::to_string(end - x) + letterAt(x) + ' ';
    }
    return runs;
}

} // namespace support
