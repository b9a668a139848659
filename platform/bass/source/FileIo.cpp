#include "platform/bass/source/FileIo.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace bass {
namespace {

Failure failureOf(int error) {
    const bool isAbsent = error == ENOENT || error == ENOTDIR || error == ENAMETOOLONG;
    return isAbsent ? Failure::notFound : Failure::unreadable;
}

} // namespace

FileIo::Opened FileIo::open(const std::string& path, std::shared_ptr<Cancel> cancel) {
    if (path.find('\0') != std::string::npos) return {nullptr, Failure::notFound};
    // O_NONBLOCK: opening a FIFO would otherwise wait for a writer.
    const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK);
    if (descriptor < 0) return {nullptr, failureOf(errno)};
    struct stat status {};
    if (fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode)) {
        close(descriptor);
        return {nullptr, Failure::unreadable};
    }
    return {std::unique_ptr<FileIo>(new FileIo(descriptor, status.st_size, std::move(cancel)))};
}

FileIo::~FileIo() {
    close(m_descriptor);
}

int FileIo::read(std::span<std::uint8_t> out) {
    ssize_t count = 0;
    do {
        count = ::read(m_descriptor, out.data(), out.size());
    } while (count < 0 && errno == EINTR);
    m_failure = count < 0 ? Failure::unreadable : Failure::none;
    if (count < 0) return AVERROR(errno);
    return count == 0 ? AVERROR_EOF : static_cast<int>(count);
}

std::int64_t FileIo::seek(std::int64_t offset) {
    const off_t reached = lseek(m_descriptor, offset, SEEK_SET);
    return reached < 0 ? AVERROR(errno) : reached;
}

} // namespace bass
