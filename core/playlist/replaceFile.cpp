#include "core/playlist/replaceFile.h"

#include "core/playlist/FileDescriptor.h"

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <optional>
#include <sys/stat.h>

namespace fs = std::filesystem;

namespace {

bool writeAll(int fd, const std::string& bytes) {
    std::size_t written = 0;
    while (written < bytes.size()) {
        const ssize_t count = ::write(fd, bytes.data() + written, bytes.size() - written);
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return false;
        written += static_cast<std::size_t>(count);
    }
    return true;
}

/// Owner first: changing it clears permission bits.
bool takeOver(int fd, const struct stat& old) {
    struct stat now {};
    if (::fstat(fd, &now) != 0) return false;
    const bool sameOwner = now.st_uid == old.st_uid && now.st_gid == old.st_gid;
    if (!sameOwner && ::fchown(fd, old.st_uid, old.st_gid) != 0) return false;
    return ::fchmod(fd, old.st_mode & 07777) == 0;
}

/// A new file whose name is short enough for any folder. A crash may have left one of our process number.
int createTemporary(const fs::path& target, fs::path& temporary) {
    static std::atomic<unsigned> counter{0};
    constexpr int mostLeftOver = 1000;
    int fd = -1;
    for (int i = 0; i < mostLeftOver && fd < 0; ++i) {
        temporary = target.parent_path() /
                    (".tulplayer-" + std::to_string(::getpid()) + "-" + std::to_string(counter.fetch_add(1)));
        fd = ::open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        if (fd < 0 && errno != EEXIST) break;
    }
    return fd;
}

/// Keeps the new name on the disk. Some file systems cannot; the file itself is safe by then.
void syncFolder(const fs::path& target) {
    const fs::path folder = target.has_parent_path() ? target.parent_path() : fs::path(".");
    const FileDescriptor directory(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (directory.isOpen()) ::fsync(directory.get());
}

enum class Outcome { replaced, failed, notAllowed };

Outcome replaceByRename(const fs::path& target, const std::optional<struct stat>& old,
                        const std::string& bytes) {
    fs::path temporary;
    const FileDescriptor file(createTemporary(target, temporary));
    if (!file.isOpen()) return errno == ENOSPC ? Outcome::failed : Outcome::notAllowed;

    const bool takenOver = !old || takeOver(file.get(), *old);
    const bool written = takenOver && writeAll(file.get(), bytes) && ::fsync(file.get()) == 0;
    if (written && std::rename(temporary.c_str(), target.c_str()) == 0) {
        syncFolder(target);
        return Outcome::replaced;
    }
    ::unlink(temporary.c_str());
    return takenOver && !written ? Outcome::failed : Outcome::notAllowed;
}

bool overwriteInPlace(const fs::path& target, const struct stat& old, const std::string& bytes) {
    const FileDescriptor file(::open(target.c_str(), O_WRONLY | O_CLOEXEC));
    if (!file.isOpen()) return false;
    const auto size = static_cast<off_t>(bytes.size());
    if (size > old.st_size && ::posix_fallocate(file.get(), 0, size) != 0) {
        [[maybe_unused]] const int undone = ::ftruncate(file.get(), old.st_size);
        return false;
    }
    return writeAll(file.get(), bytes) && ::ftruncate(file.get(), size) == 0 && ::fsync(file.get()) == 0;
}

} // namespace

fs::path followLinks(const fs::path& path) {
    constexpr int maxLinks = 40; // as the kernel does
    fs::path target = path;
    std::error_code failed;
    for (int i = 0; i < maxLinks && fs::is_symlink(target, failed); ++i) {
        const fs::path link = fs::read_symlink(target, failed);
        target = target.parent_path() / link;
    }
    return target;
}

bool replaceFile(const std::string& path, const std::string& bytes) {
    const fs::path target = followLinks(path);
    std::optional<struct stat> old;
    struct stat status {};
    if (::lstat(target.c_str(), &status) == 0) {
        if (!S_ISREG(status.st_mode) || ::access(target.c_str(), W_OK) != 0) return false;
        old = status;
    }

    const Outcome outcome = replaceByRename(target, old, bytes);
    if (outcome == Outcome::notAllowed && old) return overwriteInPlace(target, *old, bytes);
    return outcome == Outcome::replaced;
}
