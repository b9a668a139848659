#include "platform/cocoa/Image.h"

#include <QFile>
#include <QHash>
#include <QSvgRenderer>

#include <cmath>

namespace cocoa {

struct Image::Data {
    std::unique_ptr<QSvgRenderer> art; ///< Null for a bitmap.
    QImage bitmap;
    QSizeF size;
    QHash<QSize, QPixmap> rendered;
};

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
        data->art = std::make_unique<QSvgRenderer>(art);
        data->size = data->art->defaultSize();
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
        m_data->art->render(&painter, QRectF(QPointF(), QSizeF(devicePixels)));
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
