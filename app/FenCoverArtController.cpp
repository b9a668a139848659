#include "app/FenCoverArtController.h"

#include "app/CoverArtView.h"
#include "app/CoverPicture.h"
#include "core/player/TulPlayer.h"
#include "platform/cocoa/Log.h"
#include "ui_CoverArtView.h"

#include <stdexcept>

namespace {

cocoa::Image defaultPicture() {
    return cocoa::Image::named(QStringLiteral("default_cover_art.png"));
}

/// Throws when the bytes are no picture.
cocoa::Image decoded(const TulPlaylistEntry& entry) {
    const QImage picture = app::coverPicture(entry);
    if (picture.isNull()) throw std::runtime_error("no picture");
    return cocoa::Image(picture);
}

cocoa::Image pictureOf(const TulPlaylistEntry& entry) {
    if (entry.coverArtSize == 0) return defaultPicture();
    try {
        return decoded(entry);
    } catch (const std::exception&) {
        cocoa::log(QStringLiteral("Faulty cover art"));
        return defaultPicture();
    }
}

} // namespace

void FenCoverArtController::initialize() {
    displayName = QStringLiteral("Cover Art");
}

void FenCoverArtController::loadView(QWidget& view) {
    Ui::CoverArtView layout;
    layout.setupUi(&view);
    coverArtView = layout.coverArtView;
    coverArtView->setImage(defaultPicture());
    if (player->stream) updateCoverArt();
}

void FenCoverArtController::updateCoverArt() {
    if (!coverArtView || player->playlist->entryCount() < 1) return;
    coverArtView->setImage(pictureOf(*player->playlist->currentEntry()));
}
