#include "app/FenCoverArtController.h"

#include "app/CoverArtView.h"
#include "app/CoverPicture.h"
#include "core/player/TulPlayer.h"
#include "platform/cocoa/Autoresizing.h"
#include "platform/cocoa/Log.h"
#include "ui_CoverArtView.h"

#include <utility>

namespace {

cocoa::Image defaultPicture() {
    return cocoa::Image::named(QStringLiteral("default_cover_art.png"));
}

} // namespace

void FenCoverArtController::initialize() {
    displayName = QStringLiteral("Cover Art");
}

void FenCoverArtController::loadView(QWidget& view) {
    Ui::CoverArtView layout;
    layout.setupUi(&view);
    cocoa::Autoresizing::of(view);
    coverArtView = layout.coverArtView;
    coverArtView->setImage(defaultPicture());
    if (player->stream) updateCoverArt();
}

void FenCoverArtController::updateCoverArt() {
    const TulPlaylistEntry* const playing = player->playingEntry();
    if (!coverArtView || !playing) return;
    const TulPlaylistEntry& entry = *playing;
    const std::pair wanted(entry.id, entry.coverArtSize);
    if (std::exchange(m_wanted, wanted) == wanted) return;
    if (entry.coverArtSize == 0) return coverArtView->setImage(defaultPicture());
    app::decodeCover(player->workers, entry, [this, wanted](const QImage& picture) {
        if (m_wanted == wanted) show(picture);
    });
}

void FenCoverArtController::show(const QImage& picture) {
    if (picture.isNull()) cocoa::log(QStringLiteral("Faulty cover art"));
    coverArtView->setImage(picture.isNull() ? defaultPicture() : cocoa::Image(picture));
}
