#pragma once

#include <QApplication>
#include <QWidget>

#include <chrono>
#include <functional>

namespace support {

/// The process's one QApplication without a display (the platform "offscreen"), made at the first call.
QApplication& offscreenApplication();

/// The same on a screen of its own, with a window manager.
QApplication& onScreenApplication();

/// Runs the event loop until `condition` holds; false when it does not within `limit`.
[[nodiscard]] bool runUntil(const std::function<bool()>& condition,
                            std::chrono::milliseconds limit = std::chrono::seconds(20));

/// What a widget paints, at `scale` device pixels a point.
QImage picture(QWidget& widget, double scale = 1.0);
/// The colours of a picture's line of pixels, like "5. 4r 23g ": r, g, b, or . for nothing; ? for anything
/// else.
std::string colours(const QImage& picture, int line);

} // namespace support
