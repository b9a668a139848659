#include "core/playlist/TrackInfo.h"

#include "core/playlist/TaggedFile.h"

#include <exception>
#include <taglib/tag.h>

namespace {

std::string utf8(const TagLib::String& text) {
    return text.toCString(true);
}

} // namespace

std::optional<TrackInfo> readTrackInfo(const std::string& source) {
    try {
        const TaggedFile tagged(source);
        const TagLib::AudioProperties* properties = tagged.ref().audioProperties();
        const TagLib::Tag* tag = tagged.ref().tag();
        if (!properties || !tag) return std::nullopt;
        return TrackInfo{.title = utf8(tag->title()),
                         .artist = utf8(tag->artist()),
                         .album = utf8(tag->album()),
                         .length = static_cast<double>(properties->lengthInSeconds())};
    } catch (const std::exception&) {
        return std::nullopt; // a damaged file can announce sizes that no memory holds
    }
}
