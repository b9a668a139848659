#include "core/files/replaceFile.h"

#include "core/files/FileDescriptor.h"
#include "core/files/folders.h"

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <optional>
#include <sys/stat.h>

namespace fs = std::filesystem;

namespace {

bool writeAll(int fd, std::string_view bytes) {
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
    const FileDescriptor directory(::open(folderOf(target).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (directory.isOpen()) ::fsync(directory.get());
}

struct Outcome {
    FileStatus status;
    bool mayBeInPlace = false; ///< It is the folder that does not allow it.
};

Outcome replaceByRename(const fs::path& target, const std::optional<struct stat>& old,
                        std::string_view bytes) {
    fs::path temporary;
    const FileDescriptor file(createTemporary(target, temporary));
    if (!file.isOpen()) return {fileStatusOf(errno), errno != ENOSPC};

    const bool takenOver = !old || takeOver(file.get(), *old);
    const bool written = takenOver && writeAll(file.get(), bytes) && ::fsync(file.get()) == 0;
    if (written && std::rename(temporary.c_str(), target.c_str()) == 0) {
        syncFolder(target);
        return {FileStatus::done};
    }
    const Outcome outcome{fileStatusOf(errno), !takenOver || written};
    ::unlink(temporary.c_str());
    return outcome;
}

FileStatus overwriteInPlace(const fs::path& target, const struct stat& old, std::string_view bytes) {
    const FileDescriptor file(::open(target.c_str(), O_WRONLY | O_CLOEXEC));
    if (!file.isOpen()) return fileStatusOf(errno);
    const auto size = static_cast<off_t>(bytes.size());
    if (size > old.st_size) {
        if (const int error = ::posix_fallocate(file.get(), 0, size); error != 0) {
            [[maybe_unused]] const int undone = ::ftruncate(file.get(), old.st_size);
            return fileStatusOf(error);
        }
    }
    const bool written =
        writeAll(file.get(), bytes) && ::ftruncate(file.get(), size) == 0 && ::fsync(file.get()) == 0;
    return written ? FileStatus::done : fileStatusOf(errno);
}

} // namespace

FileStatus replaceFile(const std::string& path, std::string_view bytes) {
    const fs::path target = followLinks(path);
    std::optional<struct stat> old;
    struct stat status {};
    if (::lstat(target.c_str(), &status) == 0) {
        if (!S_ISREG(status.st_mode) || ::access(target.c_str(), W_OK) != 0) return FileStatus::notAllowed;
        old = status;
    }

    const Outcome outcome = replaceByRename(target, old, bytes);
    if (outcome.mayBeInPlace && old) return overwriteInPlace(target, *old, bytes);
    return outcome.status;
}
