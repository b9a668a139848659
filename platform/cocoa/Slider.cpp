#include "platform/cocoa/Slider.h"

#include "platform/cocoa/Accessibility.h"
#include "platform/cocoa/RunLoop.h"
#include "platform/cocoa/Scale.h"

#include <QAccessible>
#include <QCoreApplication>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QStyle>
#include <QToolTip>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>

namespace cocoa {
namespace {

/// Tool tips appear below the place they are shown at; this one is to be above the bar.
constexpr int toolTipRise = 48;

} // namespace

/// State while the knob is held: the offset of the pointer from the knob's centre.
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
    setFocusPolicy(Qt::TabFocus);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    setAttribute(Qt::WA_Hover); // the hover look of knobs
    m_lateAction.setSingleShot(true);
    m_lateAction.callOnTimeout([this] { sendAction(); });
}

Slider::~Slider() = default;

void Slider::setCell(std::unique_ptr<SliderCell> cell) {
    if (cell == nullptr) return;
    m_cell = std::move(cell);
    m_cell->setControlView(this);
    updateGeometry();
    setNeedsDisplayInRect(designRect(*this));
}

void Slider::setDoubleValue(double value) {
    // Ignore new values while the knob is held, and until its last change has been reported.
    if (!isTracking() && !m_lateAction.isActive()) m_cell->setDoubleValue(value);
}

QString Slider::valueTextOf(double value) const {
    return m_valueText ? m_valueText(value) : QString::number(value);
}

bool Slider::isTracking() const {
    return m_tracking != nullptr;
}

void Slider::setNeedsDisplayInRect(const QRectF& rect) {
    const double factor = Scale::shared().factor();
    update(QRectF(rect.topLeft() * factor, rect.size() * factor).toAlignedRect());
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
    callAction();
}

void Slider::callAction() {
    if (!m_isContinuous && isTracking()) {
        m_actionWaits = true;
        return;
    }
    const qint64 interval = m_actionInterval.count();
    if (!m_sinceAction.isValid() || m_sinceAction.hasExpired(interval)) return sendAction();
    if (!m_lateAction.isActive())
        m_lateAction.start(static_cast<int>(std::max<qint64>(interval - m_sinceAction.elapsed(), 0)));
}

void Slider::sendAction() {
    m_lateAction.stop();
    m_actionWaits = false;
    if (m_actionInterval.count() > 0) m_sinceAction.start();
    if (m_action) m_action();
}

double Slider::travel() const {
    return m_cell->barRectFlipped(true).width() - m_cell->knobThickness();
}

/// With the knob's centre at `x`.
double Slider::valueAt(double x) const {
    const double left = m_cell->barRectFlipped(true).x() + m_cell->knobThickness() / 2;
    return minValue() + std::clamp((x - left) / travel(), 0.0, 1.0) * (maxValue() - minValue());
}

void Slider::moveKnobTo(double x) {
    if (travel() <= 0) return;
    const double value = valueAt(x);
    const bool snaps = m_snap && std::abs(value - m_snap->value) < m_snap->distance;
    moveTo(snaps ? m_snap->value : value);
    showValueAt(x);
}

void Slider::showValueAt(double x) {
    if (!m_showsValueAtPointer || travel() <= 0) return;
    const double onBar = std::clamp(x, 0.0, designRect(*this).width());
    const QPoint above = mapToGlobal(QPoint(scaledToInt(onBar), -scaledToInt(toolTipRise)));
    QToolTip::showText(above, valueTextOf(valueAt(x)), this);
}

void Slider::stopTracking() {
    QCoreApplication::instance()->removeEventFilter(this);
    m_tracking.reset();
    if (m_lateAction.isActive() || m_actionWaits) sendAction();
}

void Slider::paintEvent(QPaintEvent* /*event*/) {
    DesignPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    m_cell->drawWithFrame(painter);
    if (!hasFocus()) return;
    // Around the whole control, so that it shows with any knob image.
    painter.setPen(QPen(palette().color(QPalette::Highlight), 1));
    painter.setBrush(Qt::NoBrush);
    painter.drawRoundedRect(designRect(*this).adjusted(0.5, 0.5, -0.5, -0.5), 4, 4);
}

void Slider::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton || !(minValue() < maxValue())) return;
    const QRectF knob = m_cell->knobRectFlipped(true);
    const double x = designPoint(event->position()).x();
    const bool onKnob = x >= knob.left() && x <= knob.right();
    m_tracking = std::make_unique<Tracking>(onKnob ? x - knob.center().x() : 0.0);
    QCoreApplication::instance()->installEventFilter(this);
    onKnob ? showValueAt(x) : moveKnobTo(x);
}

void Slider::mouseMoveEvent(QMouseEvent* event) {
    if (isTracking()) moveKnobTo(designPoint(event->position()).x() - m_tracking->grabOffset);
}

void Slider::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton) stopTracking();
}

void Slider::keyPressEvent(QKeyEvent* event) {
    if (event->modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier))
        return event->ignore();
    const double range = maxValue() - minValue();
    const double step = m_step.value_or(range / 100);
    const double page = m_step ? *m_step * 6 : range / 10;
    switch (event->key()) {
    case Qt::Key_Left:
    case Qt::Key_Down:
        return moveTo(doubleValue() - step);
    case Qt::Key_Right:
    case Qt::Key_Up:
        return moveTo(doubleValue() + step);
    case Qt::Key_PageDown:
        return moveTo(doubleValue() - page);
    case Qt::Key_PageUp:
        return moveTo(doubleValue() + page);
    case Qt::Key_Home:
        return moveTo(minValue());
    case Qt::Key_End:
        return moveTo(maxValue());
    default:
        event->ignore();
    }
}

void Slider::wheelEvent(QWheelEvent* event) {
    // One notch of a wheel is 120; horizontal scrolling turns pages.
    const QPoint angle = event->angleDelta();
    if (std::abs(angle.x()) > std::abs(angle.y()) || isTracking()) return event->ignore();
    moveTo(doubleValue() + angle.y() / 120.0 * m_step.value_or((maxValue() - minValue()) / 50));
    event->accept();
}

bool Slider::eventFilter(QObject* watched, QEvent* event) {
    // The release event goes to a menu that has opened meanwhile, and is lost when a modal dialog blocks the
    // window.
    const bool released = event->type() == QEvent::MouseButtonRelease &&
                          static_cast<QMouseEvent*>(event)->button() == Qt::LeftButton;
    if (released || (event->type() == QEvent::WindowBlocked && watched == window())) stopTracking();
    return QWidget::eventFilter(watched, event);
}

bool Slider::event(QEvent* event) {
    switch (event->type()) {
    case QEvent::ToolTip:
        if (!m_showsValueAtPointer || !(minValue() < maxValue())) break;
        showValueAt(designPoint(static_cast<QHelpEvent*>(event)->pos()).x());
        return true;
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
        setNeedsDisplayInRect(designRect(*this));
        break;
    default:
        break;
    }
    return QWidget::event(event);
}

} // namespace cocoa
