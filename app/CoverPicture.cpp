#include "app/CoverPicture.h"

#include "core/background/Workers.h"
#include "core/playlist/TulPlaylistEntry.h"

#include <QBuffer>
#include <QByteArray>
#include <QImageReader>

#include <utility>

namespace app {
namespace {

/// Bounds time and memory: a large scan would take seconds and half a gigabyte.
constexpr int maxCoverSide = 1600;

QImage decoded(QByteArray& bytes) {
    QBuffer buffer(&bytes);
    QImageReader reader(&buffer);
    reader.setAutoTransform(true);
    const QSize size = reader.size();
    if (size.width() > maxCoverSide || size.height() > maxCoverSide)
        reader.setScaledSize(size.scaled(maxCoverSide, maxCoverSide, Qt::KeepAspectRatio));
    return reader.read();
}

} // namespace

void decodeCover(Workers& workers, const TulPlaylistEntry& entry, std::function<void(const QImage&)> take) {
    if (entry.coverArtSize == 0) return take({});
    const QByteArray bytes(entry.coverArt.get(), entry.coverArtSize); // the entry may be destroyed
    workers.run(Workers::Lane::own, [bytes, take = std::move(take)](const Workers::Reply& reply) {
        QByteArray own = bytes;
        reply.post([take, picture = decoded(own)] { take(picture); });
    });
}

} // namespace app
