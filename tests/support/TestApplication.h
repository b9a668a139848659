#pragma once

#include <QApplication>
#include <QWidget>

#include <chrono>
#include <functional>

namespace support {

/// The process's one QApplication without a display (the platform "offscreen"), made at the first call.
QApplication& offscreenApplication();

/// Runs the event loop until `condition` holds; false when it does not within `limit`.
[[nodiscard]] bool runUntil(const std::function<bool()>& condition,
                            std::chrono::milliseconds limit = std::chrono::seconds(20));

/// What a widget paints, at `scale` device pixels a point.
QImage picture(QWidget& widget, double scale = 1.0);

} // namespace support
