#include "platform/cocoa/Image.h"

#include <QFile>
#include <QHash>
#include <QSvgRenderer>

#include <cmath>

namespace cocoa {

struct Image::Data {
    std::shared_ptr<QSvgRenderer> art; ///< Null for a bitmap.
    QImage bitmap;
    QSizeF size;
    /// Of the art's height, from its top; all of it by default.
    double stretchedFrom = 0;
    double stretchedTo = 0;
    QHash<QSize, QPixmap> rendered;

    void renderArt(QPainter& painter, const QSizeF& pixels) const;
};

/// Band by band: each is the whole art, placed so that the band falls where it belongs, and clipped to it.
void Image::Data::renderArt(QPainter& painter, const QSizeF& pixels) const {
    const double artHeight = art->defaultSize().height();
    const double pixelsPerPoint = pixels.height() / size.height();
    const double surplus = size.height() - artHeight;
    const struct {
        double artTop, artBottom, top, bottom;
    } bands[] = {{0, stretchedFrom, 0, stretchedFrom},
                 {stretchedFrom, stretchedTo, stretchedFrom, stretchedTo + surplus},
                 {stretchedTo, artHeight, stretchedTo + surplus, size.height()}};
    for (const auto& [artTop, artBottom, top, bottom] : bands) {
        if (artBottom <= artTop) continue;
        const double stretch = (bottom - top) / (artBottom - artTop) * pixelsPerPoint;
        const double first = std::round(top * pixelsPerPoint);
        painter.setClipRect(QRectF(0, first, pixels.width(), std::round(bottom * pixelsPerPoint) - first));
        art->render(&painter,
                    QRectF(0, top * pixelsPerPoint - artTop * stretch, pixels.width(), artHeight * stretch));
    }
}

namespace {

/// A picture is shown in a handful of sizes; more than this means that it is being resized, and nothing is
/// worth keeping.
constexpr int keptRenderings = 8;

/// The rectangle with its edges on whole device pixels, in the painter's coordinates. Only for upright
/// painters.
QRectF onDevicePixels(const QPainter& painter, const QRectF& rect) {
    const QTransform transform = painter.deviceTransform();
    if (transform.type() > QTransform::TxScale) return rect;
    const QRectF device = transform.mapRect(rect);
    const QPointF topLeft(std::round(device.left()), std::round(device.top()));
    const QPointF bottomRight(std::round(device.right()), std::round(device.bottom()));
    return transform.inverted().mapRect(QRectF(topLeft, bottomRight));
}

} // namespace

Image::Image(const QImage& bitmap) {
    if (bitmap.isNull()) return;
    m_data = std::make_shared<Data>();
    m_data->bitmap = bitmap;
    m_data->size = bitmap.deviceIndependentSize();
}

Image Image::named(const QString& name) {
    static QHash<QString, Image> loaded;
    const QString stem = name.endsWith(QLatin1String(".png")) ? name.chopped(4) : name;
    const auto found = loaded.constFind(stem);
    if (found != loaded.constEnd()) return *found;

    const QString path = QLatin1String(":/images/") + stem;
    Image image;
    if (const QString art = path + QLatin1String(".svg"); QFile::exists(art)) {
        auto data = std::make_shared<Data>();
        data->art = std::make_shared<QSvgRenderer>(art);
        data->size = data->art->defaultSize();
        data->stretchedTo = data->size.height();
        if (data->art->isValid()) image = Image(std::move(data));
    } else {
        image = Image(QImage(path + QLatin1String(".png")));
    }
    loaded.insert(stem, image);
    return image;
}

QSizeF Image::size() const {
    return isNull() ? QSizeF(0, 0) : m_data->size;
}

Image Image::withHeight(double height, double stretchedFrom, double stretchedTo) const {
    if (isNull() || !m_data->art) return *this;
    auto data = std::make_shared<Data>();
    data->art = m_data->art;
    data->size = QSizeF(m_data->size.width(), height);
    data->stretchedFrom = stretchedFrom;
    data->stretchedTo = stretchedTo;
    return Image(std::move(data));
}

void Image::drawInRect(QPainter& painter, const QRectF& rect) const {
    if (isNull()) return;
    const QRectF target = onDevicePixels(painter, rect);
    const QSize pixels = painter.deviceTransform().mapRect(target).size().toSize();
    if (pixels.isEmpty()) return;
    painter.drawPixmap(target, pixmap(pixels), QRectF(QPointF(), QSizeF(pixels)));
}

void Image::drawAtPoint(QPainter& painter, const QPointF& topLeft) const {
    if (isNull()) return;
    // The size is rounded apart from the place, so that a moving picture never changes its size.
    const QTransform transform = painter.deviceTransform();
    const QSize pixels = transform.mapRect(QRectF(QPointF(), size())).size().toSize();
    const QPointF corner = transform.map(topLeft);
    const QRectF device(QPointF(std::round(corner.x()), std::round(corner.y())), QSizeF(pixels));
    drawInRect(painter, transform.inverted().mapRect(device));
}

QPixmap Image::pixmap(const QSize& devicePixels) const {
    if (isNull() || devicePixels.isEmpty()) return {};
    const auto kept = m_data->rendered.constFind(devicePixels);
    if (kept != m_data->rendered.constEnd()) return *kept;

    QPixmap rendered;
    if (m_data->art) {
        rendered = QPixmap(devicePixels);
        rendered.fill(Qt::transparent);
        QPainter painter(&rendered);
        painter.setRenderHint(QPainter::Antialiasing);
        m_data->renderArt(painter, QSizeF(devicePixels));
    } else {
        QImage scaled = m_data->bitmap.scaled(devicePixels, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
        scaled.setDevicePixelRatio(1);
        rendered = QPixmap::fromImage(scaled);
    }
    if (m_data->rendered.size() >= keptRenderings) m_data->rendered.clear();
    m_data->rendered.insert(devicePixels, rendered);
    return rendered;
}

} // namespace cocoa
