#include "core/files/TemporaryFile.h"

#include "core/files/FolderLock.h"
#include "core/files/folders.h"

#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <fcntl.h>
#include <string>
#include <sys/stat.h>

namespace fs = std::filesystem;

namespace {

using namespace std::chrono_literals;

/// A fixed short prefix, not the target's name: that might exceed the file system's limit.
constexpr std::string_view prefix = ".tulplayer-";

fs::path newPath(const fs::path& folder) {
    static std::atomic<unsigned> counter{0};
    return folder / (std::string(prefix) + std::to_string(::getpid()) + "-" + std::to_string(++counter));
}

bool isRemoved(const FileDescriptor& file) {
    struct stat status {};
    return ::fstat(file.get(), &status) == 0 && status.st_nlink == 0;
}

/// Flushes a rename to the disk. Errors are ignored: the file's content is on the disk by then.
void syncFolder(const fs::path& folder) {
    const FileDescriptor directory(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (directory.isOpen()) ::fsync(directory.get());
}

} // namespace

bool writeAt(const FileDescriptor& file, std::string_view bytes, std::size_t offset) {
    while (!bytes.empty()) {
        const ssize_t count = ::pwrite(file.get(), bytes.data(), bytes.size(), static_cast<off_t>(offset));
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return false;
        bytes.remove_prefix(static_cast<std::size_t>(count));
        offset += static_cast<std::size_t>(count);
    }
    return true;
}

TemporaryFile::TemporaryFile(const fs::path& folder) {
    constexpr int maxTries = 1000; // the name may be taken, or the file removed as stale before it is locked
    for (int i = 0; i < maxTries; ++i) {
        m_path = newPath(folder);
        m_file = FileDescriptor(::open(m_path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
        if (!m_file.isOpen() && errno == EEXIST) continue;
        if (!m_file.isOpen() || (lockFile(m_file, 1s) != Locking::busy && !isRemoved(m_file))) return;
    }
}

TemporaryFile::~TemporaryFile() {
    if (m_file.isOpen() && !m_path.empty()) ::unlink(m_path.c_str());
}

bool TemporaryFile::write(std::string_view bytes) const {
    const off_t end = ::lseek(m_file.get(), 0, SEEK_END);
    return end >= 0 && writeAt(m_file, bytes, static_cast<std::size_t>(end));
}

bool TemporaryFile::replace(const fs::path& target) {
    if (::fsync(m_file.get()) != 0 || std::rename(m_path.c_str(), target.c_str()) != 0) return false;
    m_path.clear();
    syncFolder(folderOf(target));
    return true;
}

void TemporaryFile::removeStale(const fs::path& folder) {
    std::error_code failed;
    for (fs::directory_iterator each(folder, failed); !failed && each != fs::directory_iterator();
         each.increment(failed)) {
        if (!each->path().filename().native().starts_with(prefix)) continue;
        const FileDescriptor file(::open(each->path().c_str(), O_RDWR | O_NONBLOCK | O_NOFOLLOW | O_CLOEXEC));
        if (file.isOpen() && lockFile(file, 0s) == Locking::done) ::unlink(each->path().c_str());
    }
}
