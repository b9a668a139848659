#include "core/playlist/readFile.h"

#include "core/playlist/FileDescriptor.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>

namespace {

/// No playlist comes near it; a file that grows while it is read ends there too.
constexpr std::size_t maxBytes = std::size_t{256} << 20;

} // namespace

std::optional<std::string> readFile(const std::string& path) {
    // Non-blocking: opening a named pipe would otherwise wait for its writer.
    const FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    struct stat status {};
    if (!file.isOpen() || ::fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode)) return std::nullopt;
    if (static_cast<std::size_t>(status.st_size) > maxBytes) return std::nullopt;

    std::string bytes;
    std::size_t length = 0;
    bytes.resize(static_cast<std::size_t>(status.st_size) + 1);
    for (;;) {
        const ssize_t count = ::read(file.get(), bytes.data() + length, bytes.size() - length);
        if (count < 0 && errno == EINTR) continue;
        if (count < 0 || length > maxBytes) return std::nullopt;
        if (count == 0) break;
        length += static_cast<std::size_t>(count);
        if (length == bytes.size()) bytes.resize(2 * bytes.size());
    }
    bytes.resize(length);
    return bytes;
}
