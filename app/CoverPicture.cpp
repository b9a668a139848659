#include "app/CoverPicture.h"

#include "core/background/Workers.h"
#include "core/playlist/TulPlaylistEntry.h"

#include <QBuffer>
#include <QByteArray>
#include <QImageReader>

#include <utility>

namespace app {
namespace {

/// A booklet scanned at its finest would take seconds and half a gigabyte.
constexpr int largestSide = 1600;

QImage decoded(QByteArray& bytes) {
    QBuffer buffer(&bytes);
    QImageReader reader(&buffer);
    reader.setAutoTransform(true);
    const QSize size = reader.size();
    if (size.width() > largestSide || size.height() > largestSide)
        reader.setScaledSize(size.scaled(largestSide, largestSide, Qt::KeepAspectRatio));
    return reader.read();
}

} // namespace

void decodeCover(Workers& workers, const TulPlaylistEntry& entry, std::function<void(const QImage&)> take) {
    if (entry.coverArtSize == 0) return take({});
    const QByteArray bytes(entry.coverArt.get(), entry.coverArtSize); // the entry may go
    workers.run(Workers::Lane::own, [bytes, take = std::move(take)](const Workers::Reply& reply) {
        QByteArray own = bytes;
        reply.post([take, picture = decoded(own)] { take(picture); });
    });
}

} // namespace app
