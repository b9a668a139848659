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

/// One track of a playlist: where its sound is, and what to show for it. Texts are UTF-8 as far as the files
/// they come from are; paths are bytes.
///
/// Threads: one at a time. An entry belongs to the main thread as soon as it is in the player's playlist.
class TulPlaylistEntry {
public:
    /// Whether the file has been asked for what is missing.
    enum class Tags : std::uint8_t {
        unread,
        left,    ///< Unread, and to stay so until the row is seen or played.
        reading, ///< By a worker.
        read,
    };

    TulPlaylistEntry() = default;
    /// Reads the tags of `source` at once.
    explicit TulPlaylistEntry(std::string source);
    TulPlaylistEntry(const TulPlaylistEntry&) = delete;
    TulPlaylistEntry& operator=(const TulPlaylistEntry&) = delete;

    /// Absolute path of a file, or an address (whatever contains "://").
    std::string source;
    std::string title;
    /// "artist - album", or the artist alone where there is no album.
    std::string artistAlbum;
    std::string artist;
    std::string album;
    /// Seconds; 0 or less is unknown.
    double length = 0.0;
    /// The entry at its playlist's current index carries the play mark.
    bool active = false;
    /// Why it did not play when it was tried last. Cleared when it plays.
    TulFailure failure;
    /// The embedded picture as the file stores it (JPEG, PNG or whatever it is), `coverArtSize` bytes.
    std::unique_ptr<char[]> coverArt;
    /// 0 as long as no picture has been found; set only when `coverArt` is complete.
    std::int32_t coverArtSize = 0;
    /// The characters that separate folders in `source`.
    static constexpr std::string_view pathSeparators = "/";

    /// No other entry of this run has it.
    const std::uint64_t id = nextId();
    Tags tags = Tags::unread;

    /// Reads title, artist, album and length from the file's tags, and takes the title from the file's name
    /// where that gives none. `onlyMissing` keeps what is filled already, and opens no file when nothing is
    /// missing. A file that cannot be read changes nothing else.
    void readTrackInfo(bool onlyMissing);
    /// The same from what has been read of the file, nothing where it could not be.
    void takeTrackInfo(const std::optional<TrackInfo>& info, bool onlyMissing);
    /// Nothing is left for readTrackInfo(true) to fill.
    [[nodiscard]] bool hasTrackInfo() const;
    /// As readTrackInfo(true), if that is possible without a file: when nothing is missing, and for
    /// addresses.
    void settleWithoutFile();
    /// The title, or the name of the file as long as there is none.
    [[nodiscard]] std::string shownTitle() const;
    /// The second line, or the artist as long as there is none.
    [[nodiscard]] const std::string& shownArtistAlbum() const {
        return artistAlbum.empty() ? artist : artistAlbum;
    }

    /// Looks for the embedded picture of MPEG audio, FLAC, MP4 and Monkey's Audio files, unless one has been
    /// found before. What is longer than 32 MB is no picture.
    void loadCoverArt();

    /// The places where pictures are, as the program that reads tags finds them. Each answers whether it has
    /// stored one.
    bool coverArtFromID3v2(TagLib::ID3v2::Tag& tag);
    bool coverArtFromAPE(TagLib::APE::Tag& tag);
    bool coverArtFromFLAC(TagLib::FLAC::File& file);
    bool coverArtFromMP4(TagLib::MP4::File& file);

private:
    static std::uint64_t nextId();
    [[nodiscard]] std::string titleFromSource() const;
    bool storeCoverArt(const char* bytes, std::size_t size);
};
