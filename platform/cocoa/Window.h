#pragma once

#include <QWidget>

namespace cocoa {

/// A borderless top-level window whose unpainted parts are see-through (where the display composites).
class Window : public QWidget {
    Q_OBJECT
public:
    explicit Window(QWidget* parent = nullptr);

    bool hasShadow() const;
    /// Asks the window manager for a shadow or none. X11 window managers that give borderless windows a
    /// shadow shape it by the window's opaque parts; off and on again updates it.
    void setHasShadow(bool shadow);

    /// The part of this window's screen that panels leave free (the whole screen where the desktop tells
    /// none); null without a screen.
    QRect visibleFrame() const;

private:
    bool m_hasShadow = true;
};

} // namespace cocoa
