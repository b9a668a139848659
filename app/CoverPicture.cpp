#include "app/CoverPicture.h"

#include "core/playlist/TulPlaylistEntry.h"

#include <QBuffer>
#include <QImageReader>

namespace app {
namespace {

/// A booklet scanned at its finest would take seconds and half a gigabyte.
constexpr int largestSide = 1600;

} // namespace

QImage coverPicture(const TulPlaylistEntry& entry) {
    if (entry.coverArtSize == 0) return {};
    QByteArray bytes = QByteArray::fromRawData(entry.coverArt.get(), entry.coverArtSize);
    QBuffer buffer(&bytes);
    QImageReader reader(&buffer);
    reader.setAutoTransform(true);
    const QSize size = reader.size();
    if (size.width() > largestSide || size.height() > largestSide)
        reader.setScaledSize(size.scaled(largestSide, largestSide, Qt::KeepAspectRatio));
    return reader.read();
}

} // namespace app
