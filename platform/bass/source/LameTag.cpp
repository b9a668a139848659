#include "platform/bass/source/LameTag.h"

#include <array>
#include <string_view>

namespace bass {

std::optional<std::int64_t> id3TagBytes(std::span<const unsigned char, id3HeaderBytes> header) {
    if (header[0] != 'I' || header[1] != 'D' || header[2] != '3') return std::nullopt;
    const bool hasFooter = header[5] & 0x10;
    const std::int64_t size =
        (header[6] & 0x7f) << 21 | (header[7] & 0x7f) << 14 | (header[8] & 0x7f) << 7 | (header[9] & 0x7f);
    constexpr auto headerBytes = static_cast<std::int64_t>(id3HeaderBytes);
    return headerBytes + size + (hasFooter ? headerBytes : 0);
}

std::int64_t skipId3Tags(AVIOContext& io, const std::function<void(const Id3Header&, std::int64_t)>& visit) {
    std::int64_t end = avio_tell(&io);
    for (;;) {
        Id3Header header{};
        const bool complete = avio_read(&io, header.data(), id3HeaderBytes) == id3HeaderBytes;
        const std::optional<std::int64_t> tag = complete ? id3TagBytes(header) : std::nullopt;
        if (!tag) break;
        if (visit) visit(header, *tag);
        end += *tag;
        if (avio_seek(&io, end, SEEK_SET) < 0) break;
    }
    avio_seek(&io, end, SEEK_SET);
    return end;
}

std::optional<LameTag> readLameTag(AVIOContext& io) {
    std::array<unsigned char, 192> frame{};
    if (avio_read(&io, frame.data(), static_cast<int>(frame.size())) != static_cast<int>(frame.size()))
        return std::nullopt;
    const bool isLayer3 = frame[0] == 0xff && (frame[1] & 0xe6) == 0xe2;
    if (!isLayer3) return std::nullopt;
    const bool isMpeg1 = (frame[1] & 0x18) == 0x18;
    const bool isMono = (frame[3] & 0xc0) == 0xc0;
    const std::size_t sideInfo = isMpeg1 ? (isMono ? 17 : 32) : (isMono ? 9 : 17);

    const auto textAt = [&](std::size_t at) {
        return std::string_view(reinterpret_cast<const char*>(&frame[at]), 4);
    };
    const std::size_t xing = 4 + sideInfo;
    if (textAt(xing) != "Xing" && textAt(xing) != "Info") return std::nullopt;
    const unsigned fields = frame[xing + 7];
    // Frame count, byte count, table of contents, quality: each is present if its bit is set.
    const std::size_t lame = xing + 8 + (fields & 1 ? 4 : 0) + (fields & 2 ? 4 : 0) + (fields & 4 ? 100 : 0) +
                             (fields & 8 ? 4 : 0);
    LameTag tag;
    tag.constantBitRate = textAt(xing) == "Info";
    const std::string_view encoder = textAt(lame);
    if (encoder != "LAME" && encoder != "Lavf" && encoder != "Lavc") return std::nullopt;
    const std::size_t delays = lame + 21;
    tag.encoderDelay = frame[delays] << 4 | frame[delays + 1] >> 4;
    tag.encoderPadding = (frame[delays + 1] & 0x0f) << 8 | frame[delays + 2];
    return tag;
}

} // namespace bass
