#pragma once

#include "platform/bass/source/ByteSource.h"

#include <limits>
#include <memory>
#include <string>
#include <string_view>

namespace bass {

/// Bytes of a server, filtered to bound the demuxer's memory: without the tags and pictures before the sound
/// (ID3v2, FLAC metadata blocks), and no more at a time than `allow` permits. Offsets do not count what is
/// removed.
class ServerBytes final : public ByteSource {
public:
    /// Skips the tags before the sound. Null when `bytes` cannot be read, or when the tags exceed 16 MB and
    /// the server cannot seek.
    [[nodiscard]] static std::shared_ptr<ServerBytes> open(std::shared_ptr<ByteSource> bytes);

    /// The first `count` bytes, or fewer at the end, without consuming them. Call it before `read`.
    [[nodiscard]] std::string_view peek(std::size_t count);

    [[nodiscard]] int read(std::span<std::uint8_t> out) override;
    [[nodiscard]] std::int64_t seek(std::int64_t offset) override;
    [[nodiscard]] std::int64_t size() const override;
    [[nodiscard]] bool seekable() const override { return m_bytes->seekable(); }
    [[nodiscard]] bool interrupted() const override { return m_bytes->interrupted(); }
    [[nodiscard]] Failure failure() const override { return m_bytes->failure(); }
    void allow(std::int64_t bytes) override { m_allowed = bytes; }

private:
    explicit ServerBytes(std::shared_ptr<ByteSource> bytes)
        : ByteSource(bytes->cancel()), m_bytes(std::move(bytes)) {}
    [[nodiscard]] bool skipTags();
    [[nodiscard]] bool skipFlacMetadata();
    [[nodiscard]] bool fetch(std::size_t count);
    [[nodiscard]] bool drop(std::int64_t count);
    [[nodiscard]] int readBody(std::span<std::uint8_t> out);
    [[nodiscard]] int readPastTags(std::span<std::uint8_t> out);

    std::shared_ptr<ByteSource> m_bytes;
    std::string m_head;      ///< replaces the bytes of `m_bytes` before `m_base`
    std::int64_t m_base = 0; ///< offset in `m_bytes` of what follows `m_head`
    std::int64_t m_offset = 0;
    bool m_ended = false; ///< `m_bytes` ended while tags were skipped
    std::int64_t m_allowed = std::numeric_limits<std::int64_t>::max();
};

} // namespace bass
