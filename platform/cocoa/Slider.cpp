#include "platform/cocoa/Slider.h"

#include "platform/cocoa/Accessibility.h"
#include "platform/cocoa/RunLoop.h"

#include <QAccessible>
#include <QCoreApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QStyle>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>

namespace cocoa {

/// The knob is held: where the pointer took it, from its centre.
class Slider::Tracking {
public:
    explicit Tracking(double grabOffset) : grabOffset(grabOffset) {}
    const double grabOffset;

private:
    RunLoop::Mode m_mode;
};

Slider::Slider(QWidget* parent) : QWidget(parent), m_cell(std::make_unique<SliderCell>()) {
    installAccessibility();
    m_cell->setControlView(this);
    setFocusPolicy(Qt::StrongFocus);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    setAttribute(Qt::WA_Hover); // the hover look of knobs
}

Slider::~Slider() = default;

void Slider::setCell(std::unique_ptr<SliderCell> cell) {
    if (cell == nullptr) return;
    m_cell = std::move(cell);
    m_cell->setControlView(this);
    updateGeometry();
    setNeedsDisplayInRect(rect());
}

void Slider::setDoubleValue(double value) {
    if (!isTracking()) m_cell->setDoubleValue(value); // the knob stays under the user's hand
}

QString Slider::valueText() const {
    return m_valueText ? m_valueText(doubleValue()) : QString::number(doubleValue());
}

bool Slider::isTracking() const {
    return m_tracking != nullptr;
}

void Slider::setNeedsDisplayInRect(const QRectF& rect) {
    update(rect.toAlignedRect());
}

QSize Slider::sizeHint() const {
    return {120, int(m_cell->knobThickness()) + 4};
}

QSize Slider::minimumSizeHint() const {
    return {2 * int(m_cell->knobThickness()), int(m_cell->knobThickness())};
}

void Slider::moveTo(double value) {
    const double before = doubleValue();
    m_cell->setDoubleValue(value);
    if (doubleValue() == before) return;
    QAccessibleValueChangeEvent changed(this, doubleValue());
    QAccessible::updateAccessibility(&changed);
    if (m_action) m_action();
}

void Slider::moveKnobTo(double x) {
    const QRectF bar = m_cell->barRectFlipped(true);
    const double travel = bar.width() - m_cell->knobThickness();
    if (travel <= 0) return;
    const double fraction = std::clamp((x - bar.x() - m_cell->knobThickness() / 2) / travel, 0.0, 1.0);
    moveTo(minValue() + fraction * (maxValue() - minValue()));
}

void Slider::stopTracking() {
    QCoreApplication::instance()->removeEventFilter(this);
    m_tracking.reset();
}

void Slider::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    m_cell->drawWithFrame(painter);
    if (!hasFocus()) return;
    // Around the whole control, so that it shows with any knob image.
    painter.setPen(QPen(palette().color(QPalette::Highlight), 1));
    painter.setBrush(Qt::NoBrush);
    painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), 4, 4);
}

void Slider::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton || !(minValue() < maxValue())) return;
    const QRectF knob = m_cell->knobRectFlipped(true);
    const double x = event->position().x();
    const bool onKnob = x >= knob.left() && x <= knob.right();
    m_tracking = std::make_unique<Tracking>(onKnob ? x - knob.center().x() : 0.0);
    QCoreApplication::instance()->installEventFilter(this);
    if (!onKnob) moveKnobTo(x);
}

void Slider::mouseMoveEvent(QMouseEvent* event) {
    if (isTracking()) moveKnobTo(event->position().x() - m_tracking->grabOffset);
}

void Slider::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton) stopTracking();
}

void Slider::keyPressEvent(QKeyEvent* event) {
    if (event->modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier))
        return event->ignore();
    const double range = maxValue() - minValue();
    switch (event->key()) {
    case Qt::Key_Left:
    case Qt::Key_Down:
        return moveTo(doubleValue() - range / 100);
    case Qt::Key_Right:
    case Qt::Key_Up:
        return moveTo(doubleValue() + range / 100);
    case Qt::Key_PageDown:
        return moveTo(doubleValue() - range / 10);
    case Qt::Key_PageUp:
        return moveTo(doubleValue() + range / 10);
    case Qt::Key_Home:
        return moveTo(minValue());
    case Qt::Key_End:
        return moveTo(maxValue());
    default:
        event->ignore();
    }
}

void Slider::wheelEvent(QWheelEvent* event) {
    // One notch of a wheel is 120; sideways strokes belong to whoever turns pages.
    const QPoint angle = event->angleDelta();
    if (std::abs(angle.x()) > std::abs(angle.y()) || isTracking()) return event->ignore();
    moveTo(doubleValue() + angle.y() / 120.0 * (maxValue() - minValue()) / 50);
    event->accept();
}

bool Slider::eventFilter(QObject* watched, QEvent* event) {
    // The button's release goes to a menu that has opened meanwhile, and is lost on a window that a prompt
    // blocks.
    const bool released = event->type() == QEvent::MouseButtonRelease &&
                          static_cast<QMouseEvent*>(event)->button() == Qt::LeftButton;
    if (released || (event->type() == QEvent::WindowBlocked && watched == window())) stopTracking();
    return QWidget::eventFilter(watched, event);
}

bool Slider::event(QEvent* event) {
    switch (event->type()) {
    case QEvent::Hide:
    case QEvent::UngrabMouse:
        stopTracking();
        break;
    case QEvent::EnabledChange:
        if (!isEnabled()) stopTracking();
        break;
    case QEvent::HoverEnter:
    case QEvent::HoverLeave:
    case QEvent::FocusIn:
    case QEvent::FocusOut:
        setNeedsDisplayInRect(rect());
        break;
    default:
        break;
    }
    return QWidget::event(event);
}

} // namespace cocoa
