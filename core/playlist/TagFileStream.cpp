#include "core/playlist/TagFileStream.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <fcntl.h>
#include <string_view>
#include <sys/stat.h>

namespace {

constexpr long blockBytes = 8192;

/// Limit of one read. TagLib reads an ID3v2 tag at once; a longer one is truncated.
constexpr unsigned long maxBlockBytes = 33UL << 20;

/// U+FFFD in UTF-8: as long as an encoded surrogate, three bytes.
constexpr std::string_view replacement = "\xef\xbf\xbd";

char* findHalfPair(char* from, char* end) {
    for (; end - from >= 3; ++from) {
        from = static_cast<char*>(std::memchr(from, 0xed, static_cast<std::size_t>(end - from) - 2));
        if (!from) return nullptr;
        if ((from[1] & 0xe0) == 0xa0 && (from[2] & 0xc0) == 0x80) return from;
    }
    return nullptr;
}

/// O_NONBLOCK: opening a named pipe would otherwise wait for a writer.
int openFile(const std::string& path) {
    return ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
}

} // namespace

TagFileStream::TagFileStream(const std::string& path, bool mendsText)
    : m_path(path), m_file(openFile(path)), m_mendsText(mendsText) {
    struct stat status {};
    if (m_file.isOpen() && ::fstat(m_file.get(), &status) == 0 && S_ISREG(status.st_mode))
        m_length = status.st_size;
}

TagLib::ByteVector TagFileStream::readBlock(unsigned long length) {
    if (!isOpen() || m_position < 0 || m_position >= m_length) return {};
    const auto size = static_cast<unsigned>(
        std::min({length, static_cast<unsigned long>(m_length - m_position), maxBlockBytes}));
    TagLib::ByteVector bytes;
    if (size > blockBytes / 2) {
        bytes.resize(size);
        bytes.resize(static_cast<unsigned>(readAt(m_position, bytes.data(), size)));
    } else {
        keepBlockAt(m_position);
        const auto start = static_cast<std::size_t>(m_position - m_blockStart);
        if (start >= m_block.size()) return {}; // the file was truncated meanwhile
        const auto count = std::min<std::size_t>(size, m_block.size() - start);
        bytes = TagLib::ByteVector(m_block.data() + start, static_cast<unsigned>(count));
    }
    mendText(bytes);
    m_position += static_cast<long>(bytes.size());
    return bytes;
}

void TagFileStream::mendText(TagLib::ByteVector& bytes) {
    if (m_hadBrokenText && !m_mendsText) return;
    char* const end = bytes.data() + bytes.size();
    for (char* at = bytes.data(); (at = findHalfPair(at, end)); at += replacement.size()) {
        m_hadBrokenText = true;
        if (!m_mendsText) return;
        std::ranges::copy(replacement, at);
    }
}

/// Fills the buffer so that it holds at least half a block from `offset` on, or up to the end of the file.
void TagFileStream::keepBlockAt(long offset) {
    const long end = m_blockStart + static_cast<long>(m_block.size());
    const long wanted = std::min(offset + blockBytes / 2, m_length);
    if (offset >= m_blockStart && wanted <= end) return;
    // Also buffer what precedes: readers step backwards from a footer to its tag.
    m_blockStart = std::max(0L, offset - blockBytes / 2);
    m_block.resize(static_cast<std::size_t>(std::min(blockBytes * 2L, m_length - m_blockStart)));
    m_block.resize(readAt(m_blockStart, m_block.data(), m_block.size()));
}

std::size_t TagFileStream::readAt(long offset, char* into, std::size_t size) const {
    std::size_t done = 0;
    while (done < size) {
        const ssize_t count =
            ::pread(m_file.get(), into + done, size - done, offset + static_cast<long>(done));
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) break;
        done += static_cast<std::size_t>(count);
    }
    return done;
}

void TagFileStream::seek(long offset, Position from) {
    if (from == Current) offset += m_position;
    if (from == End) offset += m_length;
    if (offset >= 0) m_position = offset; // like lseek: ignores an offset before the start
}
