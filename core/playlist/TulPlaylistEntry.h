#pragma once

#include "core/playlist/TrackInfo.h"
#include "core/playlist/TulFailure.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace TagLib {
namespace APE {
class Tag;
}
namespace FLAC {
class File;
}
namespace ID3v2 {
class Tag;
}
namespace MP4 {
class File;
}
} // namespace TagLib

/// One track of a playlist: its source, and the texts to show for it. Texts are UTF-8 as far as their files
/// are; paths are bytes.
///
/// Threads: one at a time. Entries of the player's playlist belong to the main thread.
class TulPlaylistEntry {
public:
    /// Whether missing texts have been read from the file.
    enum class Tags : std::uint8_t {
        unread,
        left,    ///< Unread until the row is visible or played.
        reading, ///< A worker reads them.
        read,
    };

    TulPlaylistEntry() = default;
    /// Reads the tags of `source` at once.
    explicit TulPlaylistEntry(std::string source);
    TulPlaylistEntry(const TulPlaylistEntry&) = delete;
    TulPlaylistEntry& operator=(const TulPlaylistEntry&) = delete;

    /// Absolute path of a file, or an address (contains "://").
    std::string source;
    std::string title;
    /// "artist - album", or the artist alone where there is no album.
    std::string artistAlbum;
    std::string artist;
    std::string album;
    /// Seconds; 0 or less while unknown.
    double length = 0.0;
    /// The entry at its playlist's current index carries the play mark.
    bool active = false;
    /// Why the last attempt to play it failed. Cleared when it plays.
    TulFailure failure;
    /// The embedded picture as stored in the file (JPEG, PNG or any other format), `coverArtSize` bytes.
    std::unique_ptr<char[]> coverArt;
    /// 0 while there is no picture.
    std::int32_t coverArtSize = 0;
    /// The characters that separate folders in `source`.
    static constexpr std::string_view pathSeparators = "/";

    /// Unique among the entries of this process.
    const std::uint64_t id = nextId();
    Tags tags = Tags::unread;

    /// Reads title, artist, album and length from the file's tags. A title that is missing there is taken
    /// from the file's name. `onlyMissing` keeps existing values, and opens no file when nothing is missing.
    /// Blocks on the file.
    void readTrackInfo(bool onlyMissing);
    /// As readTrackInfo, with the tags as read from the file; none when it could not be read.
    void takeTrackInfo(const std::optional<TrackInfo>& info, bool onlyMissing);
    /// True when no text is missing.
    [[nodiscard]] bool hasTrackInfo() const;
    /// As readTrackInfo(true) where that needs no file: when nothing is missing, and for addresses.
    void settleWithoutFile();
    /// The title, or the file's name while there is none.
    [[nodiscard]] std::string shownTitle() const;
    /// "artist - album", or the artist while there is none.
    [[nodiscard]] const std::string& shownArtistAlbum() const {
        return artistAlbum.empty() ? artist : artistAlbum;
    }

    /// Reads the embedded picture of MPEG audio, FLAC, MP4 and Monkey's Audio files, unless there is one
    /// already. Pictures above 32 MB are ignored. Blocks on the file.
    void loadCoverArt();

    /// Look for a picture in one kind of tag, on behalf of tulplayer-tags. True when one was stored.
    bool coverArtFromID3v2(TagLib::ID3v2::Tag& tag);
    bool coverArtFromAPE(TagLib::APE::Tag& tag);
    bool coverArtFromFLAC(TagLib::FLAC::File& file);
    bool coverArtFromMP4(TagLib::MP4::File& file);

private:
    static std::uint64_t nextId();
    [[nodiscard]] std::string titleFromSource() const;
    bool storeCoverArt(const char* bytes, std::size_t size);
};
