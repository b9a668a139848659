#include "core/playlist/TagFileStream.h"

#include "core/playlist/resolveEntrySource.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <fcntl.h>
#include <string_view>
#include <sys/stat.h>

namespace {

constexpr long blockBytes = 8192;

/// TagLib reads what is nested by calling itself, without a limit: boxes of MP4 from here, chapters from the
/// block that holds them. No honest file comes near these.
constexpr std::ptrdiff_t deepestStack = 512L * 1024;
constexpr std::size_t mostChapters = 1000;

const char* stackHere() {
    return static_cast<const char*>(__builtin_frame_address(0));
}

/// Whether the frame that begins here is packed: nobody sees how many are in it before TagLib unpacks them.
bool isPacked(std::string_view frame) {
    constexpr std::size_t headerBytes = 10;
    constexpr int packed = 0x08 | 0x80; // in ID3v2.4 and in 2.3
    return frame.size() >= headerBytes && static_cast<unsigned char>(frame[4]) < 0x10 &&
           (frame[9] & packed) != 0;
}

bool holdsTooManyChapters(const TagLib::ByteVector& bytes) {
    const std::string_view text(bytes.data(), bytes.size());
    std::size_t count = 0;
    for (auto at = text.find('C'); at != text.npos && count <= mostChapters; at = text.find('C', at + 1)) {
        const std::string_view id = text.substr(at, 4);
        if (id != "CHAP" && id != "CTOC") continue;
        if (isPacked(text.substr(at))) return true;
        ++count;
    }
    return count > mostChapters;
}

/// Non-blocking: opening a named pipe would otherwise wait for its writer.
int openFile(const std::string& source) {
    if (isAddress(source)) return -1;
    return ::open(source.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
}

} // namespace

TagFileStream::TagFileStream(const std::string& source)
    : m_path(source), m_file(openFile(source)), m_stack(stackHere()) {
    struct stat status {};
    if (m_file.isOpen() && ::fstat(m_file.get(), &status) == 0 && S_ISREG(status.st_mode))
        m_length = status.st_size;
}

TagLib::ByteVector TagFileStream::readBlock(unsigned long length) {
    if (!isOpen() || m_position < 0 || m_position >= m_length) return {};
    if (std::abs(m_stack - stackHere()) > deepestStack) return {};
    const auto size = static_cast<unsigned>(
        std::min<unsigned long>({length, static_cast<unsigned long>(m_length - m_position), 0x7fffffffUL}));

    std::size_t count = 0;
    TagLib::ByteVector bytes;
    if (size > blockBytes / 2) {
        bytes.resize(size);
        count = readAt(m_position, bytes.data(), size);
        bytes.resize(static_cast<unsigned>(count));
        if (holdsTooManyChapters(bytes)) return {};
    } else {
        keepBlockAt(m_position);
        const auto start = static_cast<std::size_t>(m_position - m_blockStart);
        if (start >= m_block.size()) return {}; // the file has become shorter
        count = std::min<std::size_t>(size, m_block.size() - start);
        bytes = TagLib::ByteVector(m_block.data() + start, static_cast<unsigned>(count));
    }
    m_position += static_cast<long>(count);
    return bytes;
}

/// Afterwards the kept block holds at least half a block from `offset` on, as far as the file goes.
void TagFileStream::keepBlockAt(long offset) {
    const long end = m_blockStart + static_cast<long>(m_block.size());
    const long wanted = std::min(offset + blockBytes / 2, m_length);
    if (offset >= m_blockStart && wanted <= end) return;
    // Readers step backwards too, from a footer to its tag.
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
    if (offset >= 0) m_position = offset; // as files do it: a place before the start is not gone to
}
