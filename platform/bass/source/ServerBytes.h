#pragma once

#include "platform/bass/source/ByteSource.h"

#include <limits>
#include <memory>
#include <string>
#include <string_view>

namespace bass {

/// The bytes of a server, as far as a decoder may trust them: without the tags and pictures before the sound
/// (ID3v2, blocks of FLAC metadata), of which a demuxer keeps several copies however long they are, and no
/// more of them at a time than was allowed. Offsets count what is left.
class ServerBytes final : public ByteSource {
public:
    /// What lies in front of the sound is skipped, up to 16 MB of it where the server cannot seek. Null when
    /// it is longer or `bytes` cannot be read.
    [[nodiscard]] static std::shared_ptr<ServerBytes> open(std::shared_ptr<ByteSource> bytes);

    /// Before anything is read: the first `count` bytes, or fewer where there are no more. They are read all
    /// the same.
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
    [[nodiscard]] int readOn(std::span<std::uint8_t> out);
    [[nodiscard]] int readPastTags(std::span<std::uint8_t> out);

    std::shared_ptr<ByteSource> m_bytes;
    std::string m_head;      ///< what comes first, in place of the bytes before `m_base`
    std::int64_t m_base = 0; ///< in `m_bytes`: what follows `m_head`
    std::int64_t m_offset = 0;
    bool m_ended = false; ///< while tags are skipped: there is nothing behind `m_head`
    std::int64_t m_allowed = std::numeric_limits<std::int64_t>::max();
};

} // namespace bass
