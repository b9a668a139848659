#include "controls/ImageBasedView.h"

#include "platform/cocoa/Scale.h"
#include "platform/cocoa/Window.h"

#include <QVariant>

void ImageBasedView::awakeFromNib() {
    m_repaint = true;
    if (const QVariant name = property("viewImage"); name.isValid())
        m_viewImage = cocoa::Image::named(name.toString());
    stretchImage();
}

void ImageBasedView::stretchImage() {
    const QVariant from = property("stretchedFrom");
    const QVariant to = property("stretchedTo");
    if (!from.isValid() || !to.isValid() || m_viewImage.isNull()) return;
    const cocoa::Image original = cocoa::Image::named(property("viewImage").toString());
    m_viewImage = original.withHeight(cocoa::designRect(*this).height(), from.toDouble(), to.toDouble());
}

void ImageBasedView::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    stretchImage();
}

QRectF ImageBasedView::imageRect(double viewHeight, const QSizeF& imageSize) {
    return {QPointF(0.0, viewHeight - imageSize.height()), imageSize};
}

void ImageBasedView::drawRect(QPainter& painter) {
    painter.save();
    painter.setCompositionMode(QPainter::CompositionMode_Source);
    painter.fillRect(geometry(), Qt::transparent);
    painter.restore();
    m_viewImage.drawAtPoint(painter,
                            imageRect(cocoa::designRect(*this).height(), m_viewImage.size()).topLeft());
}

void ImageBasedView::paintEvent(QPaintEvent*) {
    cocoa::DesignPainter painter(this);
    drawRect(painter);
    if (!m_repaint) return;
    m_repaint = false;
    // Queued: changing the shadow may recreate the window, which must not happen while drawing.
    QMetaObject::invokeMethod(this, "renewShadow", Qt::QueuedConnection);
}

void ImageBasedView::renewShadow() {
    auto* const shadowed = qobject_cast<cocoa::Window*>(window());
    if (!shadowed) return;
    shadowed->setHasShadow(false);
    shadowed->setHasShadow(true);
}
