#pragma once

#include <QObject>
#include <QPainter>
#include <QRectF>
#include <QWidget>

namespace cocoa {

/// How many points of the screen a point of the design takes. Whatever is drawn or laid out in points of the
/// design goes by it, so that text and art grow together and stay sharp. 1 at first. Main thread only.
class Scale : public QObject {
    Q_OBJECT
public:
    static Scale& shared();

    [[nodiscard]] double factor() const { return m_factor; }
    void setFactor(double factor);

signals:
    void changed();

private:
    double m_factor = 1.0;
};

/// Points of the screen.
[[nodiscard]] double scaled(double points);
[[nodiscard]] int scaledToInt(double points);

[[nodiscard]] QRect scaledToInt(const QRectF& rect);
/// Points of the design.
[[nodiscard]] QPointF designPoint(const QPointF& point);
[[nodiscard]] QRectF designRect(const QRectF& rect);
/// A widget's rectangle.
[[nodiscard]] QRectF designRect(const QWidget& widget);

/// Paints a widget in points of the design.
class DesignPainter : public QPainter {
public:
    explicit DesignPainter(QWidget* widget);
};

} // namespace cocoa
