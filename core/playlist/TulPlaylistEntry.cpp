#include "core/playlist/TulPlaylistEntry.h"

#include "core/playlist/TagProgram.h"
#include "core/playlist/resolveEntrySource.h"

#include <atomic>
#include <utility>

namespace {

void fill(std::string& field, bool onlyMissing, std::string value) {
    if (!onlyMissing || field.empty()) field = std::move(value);
}

} // namespace

TulPlaylistEntry::TulPlaylistEntry(std::string path) : source(std::move(path)) {
    readTrackInfo(false);
}

/// Atomic: workers make entries, too.
std::uint64_t TulPlaylistEntry::nextId() {
    static std::atomic<std::uint64_t> last{0};
    return ++last;
}

bool TulPlaylistEntry::hasTrackInfo() const {
    return length > 0 && !title.empty() && !artistAlbum.empty() && !artist.empty() && !album.empty();
}

void TulPlaylistEntry::readTrackInfo(bool onlyMissing) {
    const bool isComplete = onlyMissing && hasTrackInfo();
    takeTrackInfo(isComplete ? std::nullopt : ::readTrackInfo(source), onlyMissing);
}

void TulPlaylistEntry::takeTrackInfo(const std::optional<TrackInfo>& info, bool onlyMissing) {
    if (info) {
        if (!onlyMissing || length <= 0) length = info->length;
        const std::string by = info->album.empty() ? info->artist : info->artist + " - " + info->album;
        fill(title, onlyMissing, info->title);
        fill(artistAlbum, onlyMissing, by);
        fill(artist, onlyMissing, info->artist);
        fill(album, onlyMissing, info->album);
    }
    if (title.empty()) title = titleFromSource();
    tags = Tags::read;
}

void TulPlaylistEntry::loadCoverArt() {
    if (coverArtSize >= 1) return;
    tags::Message picture = tags::ask(tags::Question::coverArt, source);
    if (picture.size == 0) return;
    coverArt = std::move(picture.bytes);
    coverArtSize = static_cast<std::int32_t>(picture.size);
}

void TulPlaylistEntry::settleWithoutFile() {
    if (hasTrackInfo() || isAddress(source)) takeTrackInfo(std::nullopt, true);
}

std::string TulPlaylistEntry::shownTitle() const {
    return title.empty() ? titleFromSource() : title;
}

std::string TulPlaylistEntry::titleFromSource() const {
    const auto separator = source.find_last_of(pathSeparators);
    const std::string fileName = separator == std::string::npos ? source : source.substr(separator + 1);
    return fileName.substr(0, fileName.rfind('.'));
}
