#pragma once

#include <QWidget>

/// The lower edge of a window, and its lower corners: dragging it changes the window's height. Its mask
/// covers only those.
///
/// Threads: main thread only.
class ResizeHandle : public QWidget {
    Q_OBJECT
public:
    explicit ResizeHandle(QWidget* parent = nullptr);

protected:
    void resizeEvent(QResizeEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    bool m_dragging = false; ///< Where the window manager does not resize windows.
    int m_grabOffset = 0;    ///< From the pointer to the window's lower edge.
};
