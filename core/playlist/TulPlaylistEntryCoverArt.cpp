#include "core/playlist/TagMessage.h"
#include "core/playlist/TulPlaylistEntry.h"

#include <algorithm>
#include <taglib/apefile.h>
#include <taglib/apetag.h>
#include <taglib/attachedpictureframe.h>
#include <taglib/flacfile.h>
#include <taglib/id3v2tag.h>
#include <taglib/mp4file.h>

bool TulPlaylistEntry::coverArtFromID3v2(TagLib::ID3v2::Tag& tag) {
    const TagLib::ID3v2::FrameList& frames = tag.frameList("APIC");
    return std::any_of(frames.begin(), frames.end(), [this](TagLib::ID3v2::Frame* frame) {
        const auto* attached = dynamic_cast<TagLib::ID3v2::AttachedPictureFrame*>(frame);
        if (!attached) return false;
        const TagLib::ByteVector picture = attached->picture();
        return storeCoverArt(picture.data(), picture.size());
    });
}

bool TulPlaylistEntry::coverArtFromAPE(TagLib::APE::Tag& tag) {
    const TagLib::APE::ItemListMap& items = tag.itemListMap();
    const auto item = items.find("COVER ART (FRONT)");
    if (item == items.end()) return false;

    // A file name or description, a zero byte, the picture.
    const TagLib::ByteVector value = item->second.value();
    const int zero = value.find('\0');
    if (zero < 0) return false;
    const auto start = static_cast<unsigned>(zero) + 1;
    return storeCoverArt(value.data() + start, value.size() - start);
}

bool TulPlaylistEntry::coverArtFromFLAC(TagLib::FLAC::File& file) {
    const TagLib::List<TagLib::FLAC::Picture*> pictures = file.pictureList();
    if (pictures.isEmpty()) return false;
    const TagLib::ByteVector picture = pictures.front()->data();
    return storeCoverArt(picture.data(), picture.size());
}

bool TulPlaylistEntry::coverArtFromMP4(TagLib::MP4::File& file) {
    if (!file.tag()) return false;
    const TagLib::MP4::ItemMap& items = file.tag()->itemMap();
    const auto item = items.find("covr");
    if (item == items.end()) return false;
    const TagLib::MP4::CoverArtList pictures = item->second.toCoverArtList();
    if (pictures.isEmpty()) return false;
    const TagLib::ByteVector picture = pictures.front().data();
    return storeCoverArt(picture.data(), picture.size());
}

bool TulPlaylistEntry::storeCoverArt(const char* bytes, std::size_t size) {
    if (size == 0 || size > tags::maxPictureBytes) return false;
    coverArt = std::make_unique_for_overwrite<char[]>(size);
    std::copy_n(bytes, size, coverArt.get());
    coverArtSize = static_cast<std::int32_t>(size);
    return true;
}
