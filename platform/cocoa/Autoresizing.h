#pragma once

#include <QHash>
#include <QObject>
#include <QRect>
#include <QSize>

class QWidget;

namespace cocoa {

/// Keeps the children of a view from a layout file in their places when the view's height or the scale
/// changes. The file gives their places in points of the design; a child's string property "autoresizing"
/// names what grows in a view that is taller than its design: "height" (the child), or "top" (the room above
/// it, so that it keeps its distance from the lower edge). Without it the child keeps its place.
class Autoresizing : public QObject {
    Q_OBJECT
public:
    /// Once, after setupUi; the view owns it.
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
