#include "app/CoverArtView.h"

#include <QPainter>

#include <utility>

namespace app {
namespace {

constexpr int backdropPixels = 12;
constexpr double margin = 24.0;
const QColor shade(16, 18, 21, 170);

QPixmap blurred(const cocoa::Image& image) {
    // Scale down to a few pixels in two smooth steps; stretching them yields a blur that is cheap to draw.
    const QImage tiny =
        image.pixmap({backdropPixels * 8, backdropPixels * 8})
            .toImage()
            .scaled(backdropPixels, backdropPixels, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    return QPixmap::fromImage(
        tiny.scaled(backdropPixels * 8, backdropPixels * 8, Qt::IgnoreAspectRatio, Qt::SmoothTransformation));
}

} // namespace

void CoverArtView::setImage(cocoa::Image image) {
    m_image = std::move(image);
    m_backdrop = m_image.isNull() ? QPixmap() : blurred(m_image);
    update();
}

QRectF CoverArtView::pictureRect(const QSizeF& view, const QSizeF& picture) {
    if (picture.isEmpty()) return {};
    const QSizeF room = view.shrunkBy(QMarginsF(margin, margin, margin, margin));
    QRectF place({}, picture.scaled(room, Qt::KeepAspectRatio));
    place.moveCenter(QRectF({}, view).center());
    return place;
}

void CoverArtView::paintEvent(QPaintEvent*) {
    if (m_image.isNull()) return;
    QPainter painter(this);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    const QRectF bounds = rect();
    QRectF cover({}, QSizeF(1, 1).scaled(bounds.size(), Qt::KeepAspectRatioByExpanding));
    cover.moveCenter(bounds.center());
    painter.drawPixmap(cover, m_backdrop, m_backdrop.rect());
    painter.fillRect(bounds, shade);
    m_image.drawInRect(painter, pictureRect(size(), m_image.size()));
}

} // namespace app
