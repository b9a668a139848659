#include "core/files/overwriteFile.h"

#include "core/files/FolderLock.h"
#include "core/files/TemporaryFile.h"
#include "core/files/folders.h"
#include "core/files/readFile.h"

#include <cerrno>
#include <charconv>
#include <fcntl.h>
#include <optional>
#include <string>
#include <sys/stat.h>
#include <vector>

namespace fs = std::filesystem;

namespace {

using namespace std::chrono_literals;

constexpr auto maxTargetWait = 1s;

/// The folders of the copies, in order of preference.
std::vector<fs::path> copyFolders() {
    std::vector<fs::path> folders;
    for (const fs::path& folder : {stateFolder(), runtimeFolder()})
        if (!folder.empty()) folders.push_back(folder / "unfinished");
    return folders;
}

/// The canonical path, so that each file has one copy name.
fs::path canonicalPath(const fs::path& path) {
    std::error_code failed;
    const fs::path canonical = fs::weakly_canonical(path, failed);
    return failed ? path : canonical;
}

/// One name for each file, so that a later save replaces the copy of an earlier one.
std::string copyName(const fs::path& target) {
    char digits[2 * sizeof(std::size_t)];
    const auto end = std::to_chars(digits, digits + sizeof digits, fs::hash_value(target), 16);
    return {digits, end.ptr};
}

/// Writes the target's path, a zero byte and the new bytes. The copy stays locked while `copy` lives.
bool keepCopy(TemporaryFile& copy, const fs::path& folder, const fs::path& target, std::string_view bytes) {
    const std::string_view path(target.c_str(), target.native().size() + 1);
    return copy.isOpen() && ::fchmod(copy.file().get(), 0600) == 0 && copy.write(path) && copy.write(bytes) &&
           copy.replace(folder / copyName(target));
}

/// Writes what the file grows by first: when the disk is full, the old bytes are still intact.
FileStatus overwrite(const FileDescriptor& file, std::string_view bytes) {
    struct stat old {};
    if (::fstat(file.get(), &old) != 0) return fileStatusOf(errno);
    const std::string_view head = bytes.substr(0, static_cast<std::size_t>(old.st_size));
    const std::string_view tail = bytes.substr(head.size());
    if (!tail.empty() && (!writeAt(file, tail, head.size()) || ::fsync(file.get()) != 0)) {
        const FileStatus status = fileStatusOf(errno);
        return ::ftruncate(file.get(), old.st_size) == 0 ? status : FileStatus::postponed;
    }
    const bool written = writeAt(file, head, 0) && ::fsync(file.get()) == 0 &&
                         ::ftruncate(file.get(), static_cast<off_t>(bytes.size())) == 0 &&
                         ::fsync(file.get()) == 0;
    return written ? FileStatus::done : FileStatus::postponed;
}

FileDescriptor openToWrite(const fs::path& path) {
    return FileDescriptor(::open(path.c_str(), O_WRONLY | O_NONBLOCK | O_NOFOLLOW | O_CLOEXEC));
}

/// Overwrites the target of a copy, and removes the copy. A locked copy belongs to a program that is still
/// saving.
void complete(const fs::path& copy) {
    const FileDescriptor owned = openToWrite(copy);
    if (!owned.isOpen() || lockFile(owned, 0s) == Locking::busy) return;
    FileStatus status{};
    const auto text = readFile(copy, status);
    if (!text) return;
    const std::size_t pathEnd = text->find('\0');
    if (pathEnd == std::string::npos) return;
    const FileDescriptor target = openToWrite(text->substr(0, pathEnd));
    if (!target.isOpen() || lockFile(target, 0s) == Locking::busy) return; // the next start tries again
    if (overwrite(target, std::string_view(*text).substr(pathEnd + 1)) == FileStatus::done)
        ::unlink(copy.c_str());
}

} // namespace

FileStatus overwriteFile(const fs::path& path, std::string_view bytes) {
    const fs::path target = canonicalPath(path);
    const FileDescriptor file = openToWrite(target);
    if (!file.isOpen()) return fileStatusOf(errno);
    if (lockFile(file, maxTargetWait) == Locking::busy) return FileStatus::busy;

    FileStatus status = FileStatus::failed;
    for (const fs::path& folder : copyFolders()) {
        makeFolder(folder); // on failure opening the copy reports the error
        TemporaryFile::removeStale(folder);
        TemporaryFile copy(folder);
        if (!keepCopy(copy, folder, target, bytes)) {
            status = fileStatusOf(errno);
            continue;
        }
        status = overwrite(file, bytes);
        if (status != FileStatus::postponed) dropUnfinishedSave(target);
        return status;
    }
    return status;
}

void completeSaves() {
    for (const fs::path& folder : copyFolders()) {
        TemporaryFile::removeStale(folder);
        std::error_code failed;
        for (fs::directory_iterator each(folder, failed); !failed && each != fs::directory_iterator();
             each.increment(failed))
            complete(each->path());
    }
}

void dropUnfinishedSave(const fs::path& target) {
    for (const fs::path& folder : copyFolders())
        ::unlink((folder / copyName(canonicalPath(target))).c_str());
}
