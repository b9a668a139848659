#include "platform/bass/source/GainTags.h"

#include "platform/bass/source/LameTag.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <span>
#include <string>
#include <string_view>

namespace bass {
namespace {

/// Longer fields are not ReplayGain fields.
constexpr std::int64_t maxFieldBytes = 512;
constexpr int maxFields = 2000;
/// How much to skip where a seek is expensive: too little for pictures.
constexpr std::int64_t maxReadThrough = std::int64_t{32} * 1024;

std::uint32_t bigEndian(std::string_view bytes, int bitsPerByte = 8) {
    std::uint32_t number = 0;
    for (const char byte : bytes)
        number = number << bitsPerByte | (static_cast<unsigned char>(byte) & ((1U << bitsPerByte) - 1));
    return number;
}

std::uint32_t littleEndian(std::string_view bytes) {
    const std::string reversed(bytes.rbegin(), bytes.rend());
    return bigEndian(reversed);
}

/// Undoes ID3v2's unsynchronisation: removes the zero byte after each 0xFF.
std::string withoutStuffing(std::string_view bytes) {
    std::string out;
    for (std::size_t i = 0; i < bytes.size(); ++i)
        if (i == 0 || bytes[i] != 0 || bytes[i - 1] != '\xff') out.push_back(bytes[i]);
    return out;
}

/// The bytes of one tag, in order.
class TagBytes {
public:
    struct Kind {
        std::int64_t maxSkipped = INT64_MAX;
        /// The whole tag is unsynchronised, and the sizes in it do not count the inserted zero bytes.
        bool isStuffed = false;
    };
    TagBytes(AVIOContext& io, std::int64_t size, const Kind& kind) : m_io(io), m_left(size), m_kind(kind) {}

    /// Empty when the tag ends before.
    std::string take(std::int64_t count) {
        std::string bytes;
        while (count-- > 0) {
            if (m_left-- <= 0 || avio_feof(&m_io)) return {};
            const auto byte = static_cast<char>(avio_r8(&m_io));
            const bool isStuffing = m_kind.isStuffed && m_last == '\xff' && byte == '\0';
            m_last = byte;
            isStuffing ? void(++count) : bytes.push_back(byte);
        }
        return bytes;
    }
    bool skip(std::int64_t count) {
        if (count > m_left || count > m_kind.maxSkipped) return false;
        if (m_kind.isStuffed) return count == 0 || !take(count).empty();
        m_left -= count;
        return avio_skip(&m_io, count) >= 0;
    }

private:
    AVIOContext& m_io;
    std::int64_t m_left;
    Kind m_kind;
    char m_last = 0;
};

/// The header of a frame; its layout depends on the version of ID3v2.
struct Id3Frame {
    std::string_view name;
    std::int64_t size;
    unsigned flags;
};

std::optional<Id3Frame> parseId3Frame(std::string_view header, int version) {
    if (header.empty() || header.front() == '\0') return std::nullopt; // padding
    if (version == 2) return Id3Frame{header.substr(0, 3), bigEndian(header.substr(3, 3)), 0};
    return Id3Frame{header.substr(0, 4), bigEndian(header.substr(4, 4), version == 4 ? 7 : 8),
                    bigEndian(header.substr(8, 2))};
}

/// Removes a text up to its zero character from `bytes`, and returns it with characters beyond ASCII
/// replaced.
std::string takeString(std::string_view& bytes, char encoding) {
    const bool isWide = encoding == 1 || encoding == 2;
    std::string text;
    if (!isWide) {
        text = bytes.substr(0, bytes.find('\0'));
        bytes.remove_prefix(std::min(text.size() + 1, bytes.size()));
        return text;
    }
    bool bigEndianUnits = encoding == 2;
    while (bytes.size() >= 2) {
        const unsigned char first = static_cast<unsigned char>(bytes[0]);
        const unsigned char second = static_cast<unsigned char>(bytes[1]);
        bytes.remove_prefix(2);
        const unsigned unit = bigEndianUnits ? first << 8 | second : second << 8 | first;
        if (unit == 0) break;
        if (unit == 0xfffe) bigEndianUnits = true;
        if (unit == 0xfffe || unit == 0xfeff) continue;
        text.push_back(unit < 0x80 ? static_cast<char>(unit) : '?');
    }
    return text;
}

void takeUserText(std::string_view bytes, ReplayGain& gain) {
    if (bytes.empty()) return;
    const char encoding = bytes.front();
    bytes.remove_prefix(1);
    const std::string key = takeString(bytes, encoding);
    gain.take(key, takeString(bytes, encoding));
}

/// An RVA2 frame. Per channel: type, gain in 1/512 dB, size of the peak in bits, peak.
void takeRelativeVolume(std::string_view bytes, ReplayGain& gain) {
    constexpr char masterVolume = 1;
    constexpr float maxDecibels = 51;
    const bool isAlbum = takeString(bytes, 0) == "album";
    while (bytes.size() >= 4) {
        const auto decibels = static_cast<std::int16_t>(bigEndian(bytes.substr(1, 2))) / 512.0F;
        const std::size_t channelBytes = 4 + (static_cast<unsigned char>(bytes[3]) + 7U) / 8;
        const bool isSane = bytes.front() == masterVolume && std::abs(decibels) <= maxDecibels;
        if (isSane) (isAlbum ? gain.albumGain : gain.trackGain) = decibels;
        bytes.remove_prefix(std::min(channelBytes, bytes.size()));
    }
}

/// Reads a key up to its zero character; empty when the tag ends before, or the key is too long.
std::string takeKey(TagBytes& bytes) {
    constexpr std::size_t maxKeyBytes = 255;
    std::string key;
    while (key.size() <= maxKeyBytes) {
        const std::string letter = bytes.take(1);
        if (letter.empty()) break;
        if (letter.front() == '\0') return key;
        key += letter;
    }
    return {};
}

void readApeItems(TagBytes bytes, ReplayGain& gain) {
    ReplayGain found;
    for (int i = 0; i < maxFields; ++i) {
        const std::string header = bytes.take(8); // size and flags
        if (header.empty()) break;
        const std::string key = takeKey(bytes);
        if (key.empty()) break;
        const std::int64_t size = littleEndian(std::string_view(header).substr(0, 4));
        if (size <= maxFieldBytes)
            found.take(key, bytes.take(size));
        else if (!bytes.skip(size))
            break;
    }
    gain.complete(found);
}

/// Removes what the frame's flags add to its content; empty when it is compressed or encrypted.
std::string contentOf(std::string bytes, const Id3Frame& frame, int version, bool unsynchronised) {
    constexpr unsigned packed3 = 0xc0, packed4 = 0x0c, grouped3 = 0x20, grouped4 = 0x40;
    constexpr unsigned unsynchronised4 = 0x02, sized4 = 0x01;
    if (frame.flags & (version == 4 ? packed4 : packed3)) return {};
    std::size_t before = frame.flags & (version == 4 ? grouped4 : grouped3) ? 1 : 0;
    if (version == 4 && frame.flags & sized4) before += 4;
    bytes.erase(0, before);
    const bool isStuffed = version == 4 && (unsynchronised || frame.flags & unsynchronised4);
    return isStuffed ? withoutStuffing(bytes) : bytes;
}

/// Reads the frames up to the end of the tag.
void readId3Frames(TagBytes bytes, int version, bool unsynchronised, ReplayGain& gain) {
    const std::int64_t headerBytes = version == 2 ? 6 : 10;
    ReplayGain relative;
    for (int i = 0; i < maxFields; ++i) {
        const std::string header = bytes.take(headerBytes);
        const auto frame = parseId3Frame(header, version);
        if (!frame) break;
        const bool isText = frame->name == "TXXX" || frame->name == "TXX";
        const bool isVolume = frame->name == "RVA2";
        if ((!isText && !isVolume) || frame->size > maxFieldBytes) {
            if (!bytes.skip(frame->size)) break;
            continue;
        }
        const std::string content = contentOf(bytes.take(frame->size), *frame, version, unsynchronised);
        isText ? takeUserText(content, gain) : takeRelativeVolume(content, relative);
    }
    gain.complete(relative);
}

/// Reads a tag; `io` is positioned after its header.
void readId3Tag(AVIOContext& io, const Id3Header& header, std::int64_t size, bool fast, ReplayGain& gain) {
    const int version = header[3];
    const bool unsynchronised = header[5] & 0x80;
    const bool hasExtension = version > 2 && header[5] & 0x40;
    if (version < 2 || version > 4) return;
    const bool isStuffed = unsynchronised && version < 4;
    TagBytes bytes(io, size,
                   {.maxSkipped = fast && !isStuffed ? INT64_MAX : maxReadThrough, .isStuffed = isStuffed});
    if (hasExtension) {
        const std::uint32_t extension = bigEndian(bytes.take(4), version == 4 ? 7 : 8);
        const std::int64_t rest = version == 4 ? std::int64_t{extension} - 4 : extension;
        if (rest < 0 || !bytes.skip(rest)) return;
    }
    readId3Frames(bytes, version, unsynchronised, gain);
}

} // namespace

std::int64_t readId3Gain(AVIOContext& io, bool fast, ReplayGain& gain) {
    return skipId3Tags(io, [&](const Id3Header& header, std::int64_t size) {
        readId3Tag(io, header, size - std::int64_t{id3HeaderBytes}, fast, gain);
    });
}

void readApeGain(AVIOContext& io, std::int64_t fileBytes, ReplayGain& gain) {
    constexpr std::int64_t footerBytes = 32, id3v1Bytes = 128;
    for (const std::int64_t behind : {std::int64_t{0}, id3v1Bytes}) {
        const std::int64_t end = fileBytes - behind;
        if (end < footerBytes || avio_seek(&io, end - footerBytes, SEEK_SET) < 0) return;
        const std::string footer = TagBytes(io, footerBytes, {}).take(footerBytes);
        if (!footer.starts_with("APETAGEX")) continue;
        const std::int64_t size = littleEndian(footer.substr(12, 4)); // with the footer
        if (size < footerBytes || size > end || avio_seek(&io, end - size, SEEK_SET) < 0) return;
        return readApeItems(TagBytes(io, size - footerBytes, {}), gain);
    }
}

void readDictionaryGain(const AVDictionary* texts, ReplayGain& gain) {
    for (const char* key : replayGainKeys)
        if (const AVDictionaryEntry* text = av_dict_get(texts, key, nullptr, 0)) gain.take(key, text->value);
}

} // namespace bass
