#pragma once

#include <QHash>
#include <QObject>
#include <QRect>
#include <QSize>

class QWidget;

namespace cocoa {

/// Lays out the children of a view from a layout file when the view's height or the scale changes. The file
/// gives their geometry in points of the design. A child's string property "autoresizing" names what grows
/// with the view: "height" (the child), or "top" (the space above it). Without it the child keeps its
/// position.
class Autoresizing : public QObject {
    Q_OBJECT
public:
    /// Installs it on a view; call it once, after setupUi. The view owns it.
    static Autoresizing& of(QWidget& view);

    void layOut();

signals:
    void laidOut();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    explicit Autoresizing(QWidget& view);

    QWidget& m_view;
    QSize m_designSize;
    QHash<QWidget*, QRect> m_designRects;
};

} // namespace cocoa
