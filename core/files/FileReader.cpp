#include "core/files/FileReader.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>

namespace {

constexpr std::size_t blockSize = std::size_t{64} << 10;

FileStatus kindOf(const FileDescriptor& file) {
    struct stat found {};
    if (!file.isOpen() || ::fstat(file.get(), &found) != 0) return fileStatusOf(errno);
    return S_ISREG(found.st_mode) ? FileStatus::done : FileStatus::notAllowed;
}

} // namespace

// O_NONBLOCK: opening a named pipe would otherwise wait for a writer.
FileReader::FileReader(const std::string& path)
    : m_file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK)),
      m_status(kindOf(m_file)),
      m_block(std::make_unique<char[]>(blockSize)) {}

std::string_view FileReader::next() {
    if (m_status != FileStatus::done) return {};
    ssize_t count = 0;
    do
        count = ::read(m_file.get(), m_block.get(), blockSize);
    while (count < 0 && errno == EINTR);
    if (count < 0) {
        m_status = fileStatusOf(errno);
        return {};
    }
    m_count += static_cast<std::size_t>(count);
    if (m_count > maxBytes) {
        m_status = FileStatus::tooLarge;
        return {};
    }
    return {m_block.get(), static_cast<std::size_t>(count)};
}
