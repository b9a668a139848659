#include "core/playlist/TagParser.h"

#include "core/playlist/TagMessage.h"
#include "core/playlist/TaggedFile.h"
#include "core/playlist/TulPlaylistEntry.h"

#include <algorithm>
#include <array>
#include <rapidjson/stringbuffer.h>
#include <taglib/apefile.h>
#include <taglib/flacfile.h>
#include <taglib/mp4file.h>
#include <taglib/mpegfile.h>
#include <taglib/tag.h>

namespace tags {
namespace {

std::optional<TrackInfo> trackInfo(const TaggedFile& tagged) {
    const TagLib::AudioProperties* properties = tagged.ref().audioProperties();
    const TagLib::Tag* tag = tagged.ref().tag();
    if (!properties || !tag) return std::nullopt;
    return TrackInfo{.title = utf8(tag->title()),
                     .artist = utf8(tag->artist()),
                     .album = utf8(tag->album()),
                     .length = static_cast<double>(std::max(properties->lengthInSeconds(), 0))};
}

bool findCoverArt(TulPlaylistEntry& entry, TagLib::File* file) {
    if (auto* mpeg = dynamic_cast<TagLib::MPEG::File*>(file)) {
        auto* id3v2 = mpeg->ID3v2Tag(false);
        if (id3v2 && entry.coverArtFromID3v2(*id3v2)) return true;
        auto* ape = mpeg->APETag(false);
        return ape && entry.coverArtFromAPE(*ape);
    }
    if (auto* flac = dynamic_cast<TagLib::FLAC::File*>(file)) {
        if (entry.coverArtFromFLAC(*flac)) return true;
        auto* id3v2 = flac->ID3v2Tag(false);
        return id3v2 && entry.coverArtFromID3v2(*id3v2);
    }
    if (auto* mp4 = dynamic_cast<TagLib::MP4::File*>(file)) return entry.coverArtFromMP4(*mp4);
    if (auto* monkeys = dynamic_cast<TagLib::APE::File*>(file)) {
        auto* ape = monkeys->APETag(false);
        return ape && entry.coverArtFromAPE(*ape);
    }
    return false;
}

} // namespace

std::string utf8(const TagLib::String& text) {
    constexpr char32_t replacement = 0xfffd;
    const auto isHigh = [](char32_t unit) { return unit >= 0xd800 && unit < 0xdc00; };
    const auto isLow = [](char32_t unit) { return unit >= 0xdc00 && unit < 0xe000; };
    rapidjson::StringBuffer out;
    std::size_t letters = 0;
    for (auto at = text.begin(); at != text.end() && *at != 0 && letters < maxTextLetters; ++letters) {
        auto letter = static_cast<char32_t>(*at++);
        if (isHigh(letter) && at != text.end() && isLow(static_cast<char32_t>(*at)))
            letter = 0x10000 + ((letter - 0xd800) << 10) + (static_cast<char32_t>(*at++) - 0xdc00);
        if (isHigh(letter) || isLow(letter) || letter > 0x10ffff) letter = replacement;
        rapidjson::UTF8<>::Encode(out, letter);
    }
    return {out.GetString(), out.GetSize()};
}

std::optional<TrackInfo> parseTrackInfo(const std::string& path) {
    const TaggedFile tagged(path);
    std::optional<TrackInfo> info = trackInfo(tagged);
    const std::array texts = {&TrackInfo::title, &TrackInfo::artist, &TrackInfo::album};
    const auto isEmpty = [&](auto text) { return ((*info).*text).empty(); };
    if (!info || !tagged.hadBrokenText() || std::ranges::none_of(texts, isEmpty)) return info;
    const std::optional<TrackInfo> mended = trackInfo(TaggedFile(path, true));
    for (const auto text : texts)
        if (mended && isEmpty(text)) (*info).*text = (*mended).*text;
    return info;
}

void parseCoverArt(TulPlaylistEntry& entry) {
    const TaggedFile tagged(entry.source);
    findCoverArt(entry, tagged.ref().file());
}

} // namespace tags
