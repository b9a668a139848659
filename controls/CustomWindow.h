#pragma once

#include "platform/cocoa/Window.h"

#include <QPointF>
#include <QRectF>

#include <memory>

/// The main window: no title bar or border, see-through where nothing is painted, moved by dragging its
/// background. Its top edge never rises above the part of the screen that panels leave free; the other edges
/// may leave the screen. Where only the compositor can place windows (Wayland), dragging starts the
/// compositor's move.
///
/// Mouse events that a child handles itself do not reach the window, so they never move it.
///
/// Threads: main thread only.
class CustomWindow : public cocoa::Window {
    Q_OBJECT
public:
    explicit CustomWindow(QWidget* parent = nullptr);
    /// Makes a window with this position and size on the screen (y grows downward).
    static std::unique_ptr<CustomWindow> initWithContentRect(const QRect& contentRect);

    /// True: the window takes the keyboard although it has no title bar.
    bool canBecomeKeyWindow() const { return true; }

    /// Where the last press fell, from the window's lower left corner, y growing upward.
    QPointF initialLocation() const { return m_initialLocation; }
    void setInitialLocation(const QPointF& location) { m_initialLocation = location; }

    /// Where a drag puts the window's lower left corner. All in coordinates whose y grows upward: rectangles
    /// of the screen by their lower left corner, `location` and `initialLocation` (pointer now, and at the
    /// press) from the window's lower left corner.
    static QPointF draggedOrigin(const QRectF& visibleFrame, const QRectF& frame, const QPointF& location,
                                 const QPointF& initialLocation);

protected:
    /// Space activates a focused button rather than a shortcut.
    bool event(QEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    QPointF locationInWindow(const QPointF& global) const;

    QPointF m_initialLocation;
    bool m_dragging = false;
};
