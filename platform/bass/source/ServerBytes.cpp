#include "platform/bass/source/ServerBytes.h"

#include "platform/bass/source/LameTag.h"

#include <algorithm>
#include <array>
#include <optional>

namespace bass {
namespace {

constexpr std::int64_t maxTagBytes = 16 << 20;
/// Longer tags are skipped by a new request if the server can seek, shorter ones by reading.
constexpr std::int64_t requestWorth = std::int64_t{256} * 1024;
constexpr std::int64_t maxFlacBlock = std::int64_t{64} * 1024;
constexpr std::size_t maxFlacHead = std::size_t{256} * 1024;

unsigned byteAt(const std::string& bytes, std::size_t at) {
    return static_cast<unsigned char>(bytes[at]);
}

} // namespace

std::shared_ptr<ServerBytes> ServerBytes::open(std::shared_ptr<ByteSource> bytes) {
    if (bytes->seekable() && bytes->seek(0) != 0) return nullptr;
    std::shared_ptr<ServerBytes> server(new ServerBytes(std::move(bytes)));
    server->allow(maxTagBytes);
    if (!server->skipTags() && !server->m_ended) return nullptr;
    return server;
}

bool ServerBytes::skipTags() {
    while (fetch(id3HeaderBytes)) {
        const auto header = std::span<const unsigned char, id3HeaderBytes>(
            reinterpret_cast<const unsigned char*>(m_head.data()), id3HeaderBytes);
        const std::optional<std::int64_t> tag = id3TagBytes(header);
        if (!tag) return !m_head.starts_with("fLaC") || skipFlacMetadata();
        if (!drop(*tag)) return false;
    }
    return false;
}

/// Skips padding, pictures and long blocks; keeps the others.
bool ServerBytes::skipFlacMetadata() {
    constexpr unsigned padding = 1, picture = 6, last = 0x80;
    std::string kept = "fLaC";
    std::size_t lastKept = 0;
    bool complete = drop(static_cast<std::int64_t>(kept.size()));
    for (bool more = true; complete && more;) {
        complete = fetch(4);
        if (!complete) break;
        const unsigned type = byteAt(m_head, 0) & ~last;
        more = !(byteAt(m_head, 0) & last);
        const std::int64_t size = 4 + (byteAt(m_head, 1) << 16 | byteAt(m_head, 2) << 8 | byteAt(m_head, 3));
        if (type == padding || type == picture || size > maxFlacBlock || kept.size() > maxFlacHead) {
            complete = drop(size);
            continue;
        }
        complete = fetch(static_cast<std::size_t>(size));
        if (!complete) break;
        lastKept = kept.size();
        kept.append(m_head, 0, static_cast<std::size_t>(size));
        kept[lastKept] = static_cast<char>(type);
        complete = drop(size);
    }
    if (lastKept > 0) kept[lastKept] = static_cast<char>(byteAt(kept, lastKept) | last);
    m_head.insert(0, kept);
    return complete;
}

std::string_view ServerBytes::peek(std::size_t count) {
    allow(static_cast<std::int64_t>(count));
    static_cast<void>(fetch(count));
    return std::string_view(m_head).substr(0, count);
}

/// Reads until `m_head` has at least `count` bytes.
bool ServerBytes::fetch(std::size_t count) {
    while (m_head.size() < count) {
        std::array<std::uint8_t, 4096> block;
        const int got = readBody(std::span(block).first(std::min(block.size(), count - m_head.size())));
        m_ended = got == AVERROR_EOF;
        if (got <= 0) return false;
        m_head.append(reinterpret_cast<const char*>(block.data()), static_cast<std::size_t>(got));
    }
    return true;
}

/// Removes `count` bytes from the front.
bool ServerBytes::drop(std::int64_t count) {
    const auto held = std::min<std::int64_t>(count, static_cast<std::int64_t>(m_head.size()));
    m_head.erase(0, static_cast<std::size_t>(held));
    count -= held;
    if (count > requestWorth && seekable()) {
        m_base += count;
        m_allowed -= requestWorth;
        return m_bytes->seek(m_base) == m_base;
    }
    std::array<std::uint8_t, 16'384> block;
    while (count > 0) {
        const auto wanted = std::min<std::int64_t>(count, block.size());
        const int got = readBody(std::span(block).first(static_cast<std::size_t>(wanted)));
        m_ended = got == AVERROR_EOF;
        if (got <= 0) return false;
        count -= got;
    }
    return true;
}

/// Reads the bytes after `m_head`, while tags are skipped.
int ServerBytes::readBody(std::span<std::uint8_t> out) {
    if (m_allowed <= 0) return AVERROR(ENOBUFS);
    const int count = m_bytes->read(out);
    if (count <= 0) return count;
    m_base += count;
    m_allowed -= count;
    return count;
}

int ServerBytes::read(std::span<std::uint8_t> out) {
    if (m_allowed <= 0) return AVERROR(ENOBUFS);
    const auto head = static_cast<std::int64_t>(m_head.size());
    int count = 0;
    if (m_offset < head) {
        count =
            static_cast<int>(std::min<std::int64_t>(head - m_offset, static_cast<std::int64_t>(out.size())));
        std::copy_n(m_head.begin() + m_offset, count, out.begin());
    } else {
        const std::int64_t place = m_base + m_offset - head;
        if (seekable() && m_bytes->seek(place) != place) return AVERROR(EIO);
        count = m_bytes->read(out);
        const bool isRefused = count < 0 && count != AVERROR_EOF && count != AVERROR_EXIT;
        if (isRefused && m_offset == head && seekable()) count = readPastTags(out);
        if (count <= 0) return count;
    }
    m_offset += count;
    m_allowed -= count;
    return count;
}

/// Reads the first bytes after the tags, from a server without range requests.
int ServerBytes::readPastTags(std::span<std::uint8_t> out) {
    if (m_bytes->seek(0) != 0) return AVERROR(EIO);
    std::int64_t left = m_base;
    while (left > 0) {
        const auto wanted = std::min<std::int64_t>(left, static_cast<std::int64_t>(out.size()));
        const int got = m_bytes->read(out.first(static_cast<std::size_t>(wanted)));
        if (got <= 0) return got;
        left -= got;
    }
    return m_bytes->read(out);
}

std::int64_t ServerBytes::seek(std::int64_t offset) {
    if (!seekable()) return AVERROR(ENOSYS);
    m_offset = offset;
    return offset;
}

std::int64_t ServerBytes::size() const {
    const std::int64_t size = m_bytes->size();
    return size < 0 ? size : size - m_base + static_cast<std::int64_t>(m_head.size());
}

} // namespace bass
