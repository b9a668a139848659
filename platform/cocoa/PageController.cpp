#include "platform/cocoa/PageController.h"

#include "platform/cocoa/ViewController.h"

#include <QKeyEvent>
#include <QStyle>
#include <QWheelEvent>

#include <cmath>

namespace cocoa {
namespace {

constexpr int slideMs = 180;
/// One notch of a tilting wheel; about a centimetre on a touchpad.
constexpr double swipeDistance = 120;
constexpr qint64 swipePauseMs = 250;

} // namespace

void PageControllerDelegate::didTransitionToObject(const QString& /*object*/) {}

PageController::PageController(QWidget* parent) : QWidget(parent) {
    m_animation.setStartValue(0.0);
    m_animation.setEndValue(1.0);
    m_animation.setEasingCurve(QEasingCurve::OutCubic);
    connect(&m_animation, &QVariantAnimation::valueChanged, this,
            [this](const QVariant& value) { slide(value.toDouble()); });
    connect(&m_animation, &QVariantAnimation::finished, this, &PageController::endTransition);
}

PageController::~PageController() {
    const auto views = findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly);
    for (QWidget* view : views)
        view->setParent(nullptr); // owned by their controllers
}

ViewController* PageController::controllerAt(int index) const {
    if (m_delegate == nullptr || index < 0 || index >= m_objects.size()) return nullptr;
    return m_delegate->viewControllerForIdentifier(m_delegate->identifierForObject(m_objects[index]));
}

void PageController::setArrangedObjects(const QStringList& objects) {
    completeTransition();
    if (m_controller != nullptr) m_controller->view().hide();
    m_objects = objects;
    m_selected = objects.isEmpty() ? -1 : 0;
    m_controller = controllerAt(m_selected);
    if (m_controller == nullptr) return;
    m_controller->view().setParent(this);
    completeTransition();
}

void PageController::turnToPage(int index) {
    if (index == m_selected) return;
    ViewController* const next = controllerAt(index);
    if (next == nullptr) return;
    completeTransition();
    m_leaving = m_controller == nullptr ? nullptr : &m_controller->view();
    m_direction = index > m_selected ? 1 : -1;
    m_selected = index;
    m_controller = next;

    QWidget& view = next->view();
    if (view.parentWidget() != this) view.setParent(this);
    view.resize(size());
    slide(0);
    view.show();
    // Ask the window for the focus widget: this widget only knows which child had it last.
    if (m_leaving != nullptr && m_leaving->isAncestorOf(window()->focusWidget())) view.setFocus();
    m_delegate->didTransitionToObject(m_objects[index]);

    const bool animated =
        isVisible() && style()->styleHint(QStyle::SH_Widget_Animation_Duration, nullptr, this) > 0;
    m_animation.setDuration(animated ? slideMs : 0);
    m_animation.start();
}

void PageController::slide(double progress) {
    if (m_controller == nullptr) return;
    const int shift = m_direction * int(std::lround(progress * width()));
    if (m_leaving != nullptr) m_leaving->move(-shift, 0);
    m_controller->view().move(m_direction * width() - shift, 0);
}

void PageController::endTransition() {
    if (m_delegate != nullptr) m_delegate->pageControllerDidEndLiveTransition();
}

void PageController::completeTransition() {
    m_animation.stop();
    if (m_leaving != nullptr) m_leaving->hide();
    m_leaving = nullptr;
    if (m_controller == nullptr) return;
    m_controller->view().setGeometry(rect());
    m_controller->view().show();
}

void PageController::resizeEvent(QResizeEvent* /*event*/) {
    if (m_leaving != nullptr) m_leaving->resize(size());
    if (m_controller != nullptr) m_controller->view().resize(size());
}

void PageController::wheelEvent(QWheelEvent* event) {
    const QPoint angle = event->angleDelta();
    if (std::abs(angle.x()) <= std::abs(angle.y())) return event->ignore();
    event->accept();
    const qint64 now = qint64(event->timestamp());
    if (event->phase() == Qt::ScrollBegin || now - m_lastSwipe > swipePauseMs) {
        m_swiped = 0;
        m_swipeDone = false;
    }
    m_lastSwipe = now;
    m_swiped += angle.x();
    // At most one page per swipe.
    if (m_swipeDone || std::abs(m_swiped) < swipeDistance) return;
    m_swipeDone = true;
    if (m_swiped < 0) turnForward();
    if (m_swiped > 0) turnBack();
}

void PageController::keyPressEvent(QKeyEvent* event) {
    const bool plain = (event->modifiers() & ~(Qt::KeypadModifier | Qt::AltModifier)) == 0;
    if (plain && event->key() == Qt::Key_Right) return turnForward();
    if (plain && event->key() == Qt::Key_Left) return turnBack();
    event->ignore();
}

} // namespace cocoa
