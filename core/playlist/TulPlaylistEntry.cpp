#include "core/playlist/TulPlaylistEntry.h"

#include "core/playlist/TaggedFile.h"

#include <exception>
#include <taglib/tag.h>
#include <utility>

namespace {

std::string utf8(const TagLib::String& text) {
    return text.toCString(true);
}

void fill(std::string& field, bool onlyMissing, std::string value) {
    if (!onlyMissing || field.empty()) field = std::move(value);
}

} // namespace

TulPlaylistEntry::TulPlaylistEntry(std::string path) : source(std::move(path)) {
    readTrackInfo(false);
}

bool TulPlaylistEntry::hasTrackInfo() const {
    return length > 0 && !title.empty() && !artistAlbum.empty() && !artist.empty() && !album.empty();
}

void TulPlaylistEntry::readTrackInfo(bool onlyMissing) {
    if (onlyMissing && hasTrackInfo()) return;
    try {
        readTags(onlyMissing);
    } catch (const std::exception&) {
        // A damaged file can announce sizes that no memory holds. It then counts as one without tags.
    }
    if (title.empty()) title = titleFromSource();
}

void TulPlaylistEntry::readTags(bool onlyMissing) {
    const TaggedFile tagged(source);
    const TagLib::AudioProperties* properties = tagged.ref().audioProperties();
    const TagLib::Tag* tag = tagged.ref().tag();
    if (!properties || !tag) return;

    if (!onlyMissing || length <= 0) length = properties->lengthInSeconds();
    const std::string tagArtist = utf8(tag->artist());
    const std::string tagAlbum = utf8(tag->album());
    fill(title, onlyMissing, utf8(tag->title()));
    fill(artistAlbum, onlyMissing, tagAlbum.empty() ? tagArtist : tagArtist + " - " + tagAlbum);
    fill(artist, onlyMissing, tagArtist);
    fill(album, onlyMissing, tagAlbum);
}

std::string TulPlaylistEntry::titleFromSource() const {
    const auto separator = source.find_last_of(pathSeparators);
    const std::string fileName = separator == std::string::npos ? source : source.substr(separator + 1);
    return fileName.substr(0, fileName.rfind('.'));
}
