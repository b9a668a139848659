#include "core/files/readFile.h"

#include "core/files/FileDescriptor.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>

namespace {

/// No playlist comes near it; a file that grows while it is read ends there too.
constexpr std::size_t maxBytes = std::size_t{256} << 20;

} // namespace

std::optional<std::string> readFile(const std::string& path, FileStatus& status) {
    // Non-blocking: opening a named pipe would otherwise wait for its writer.
    const FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    struct stat found {};
    status = file.isOpen() && ::fstat(file.get(), &found) == 0 ? FileStatus::done : fileStatusOf(errno);
    if (status != FileStatus::done) return std::nullopt;
    status = FileStatus::notAllowed;
    if (!S_ISREG(found.st_mode)) return std::nullopt;
    status = FileStatus::malformed;
    if (static_cast<std::size_t>(found.st_size) > maxBytes) return std::nullopt;

    std::string bytes;
    std::size_t length = 0;
    bytes.resize(static_cast<std::size_t>(found.st_size) + 1);
    for (;;) {
        const ssize_t count = ::read(file.get(), bytes.data() + length, bytes.size() - length);
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) status = fileStatusOf(errno);
        if (count < 0 || length > maxBytes) return std::nullopt;
        if (count == 0) break;
        length += static_cast<std::size_t>(count);
        if (length == bytes.size()) bytes.resize(2 * bytes.size());
    }
    bytes.resize(length);
    status = FileStatus::done;
    return bytes;
}
