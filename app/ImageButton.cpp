#include "app/ImageButton.h"

#include "controls/Colours.h"
#include "platform/cocoa/Scale.h"

#include <QKeyEvent>

#include <utility>

namespace app {

ImageButton::ImageButton(QWidget* parent) : QAbstractButton(parent) {
    setFocusPolicy(Qt::TabFocus);
}

void ImageButton::setImage(cocoa::Image image) {
    m_image = std::move(image);
    update();
}

void ImageButton::setImageName(const QString& name) {
    m_imageName = name;
    m_hoverImage = cocoa::Image::named(name + QStringLiteral("_hover"));
    setImage(cocoa::Image::named(name));
}

QSize ImageButton::sizeHint() const {
    return m_image.size().toSize();
}

QRectF ImageButton::centred(const cocoa::Image& image) const {
    QRectF place({}, image.size());
    place.moveCenter(cocoa::designRect(*this).center());
    return place;
}

void ImageButton::paintEvent(QPaintEvent*) {
    cocoa::DesignPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const bool hovered = underMouse() && isEnabled();
    if (isDown()) painter.setOpacity(0.7);
    const cocoa::Image& shown = hovered && !m_hoverImage.isNull() ? m_hoverImage : m_image;
    shown.drawInRect(painter, centred(shown));
    painter.setOpacity(1.0);
    painter.setPen(Qt::NoPen);
    if (hovered && m_hoverImage.isNull()) {
        painter.setBrush(QColor(255, 255, 255, isDown() ? 10 : 22));
        const QRectF glow = cocoa::designRect(*this).adjusted(2, 2, -2, -2);
        m_round ? painter.drawEllipse(glow) : painter.drawRoundedRect(glow, 4, 4);
    }
    if (!hasFocus()) return;
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(colours::yellow(), 1.0));
    const QRectF ring = cocoa::designRect(*this).adjusted(0.5, 0.5, -0.5, -0.5);
    m_round ? painter.drawEllipse(ring) : painter.drawRoundedRect(ring, 4, 4);
}

void ImageButton::enterEvent(QEnterEvent* event) {
    QAbstractButton::enterEvent(event);
    update();
}

void ImageButton::leaveEvent(QEvent* event) {
    QAbstractButton::leaveEvent(event);
    update();
}

void ImageButton::keyPressEvent(QKeyEvent* event) {
    const bool enter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    enter ? click() : QAbstractButton::keyPressEvent(event);
}

} // namespace app
