#include "core/files/replaceFile.h"

#include "core/files/TemporaryFile.h"
#include "core/files/folders.h"
#include "core/files/overwriteFile.h"

#include <algorithm>
#include <cerrno>
#include <linux/limits.h>
#include <optional>
#include <sys/stat.h>
#include <sys/xattr.h>

namespace fs = std::filesystem;

namespace {

/// Copies extended attributes, such as access control lists. Failures are ignored: only the system may set
/// some.
void copyAttributes(const fs::path& from, const FileDescriptor& to) {
    std::string names(XATTR_LIST_MAX, '\0');
    std::string value(XATTR_SIZE_MAX, '\0');
    const ssize_t length = ::listxattr(from.c_str(), names.data(), names.size());
    names.resize(static_cast<std::size_t>(std::max<ssize_t>(0, length)));
    for (std::size_t start = 0; start < names.size(); start = names.find('\0', start) + 1) {
        const char* name = &names[start];
        const ssize_t size = ::getxattr(from.c_str(), name, value.data(), value.size());
        if (size >= 0) ::fsetxattr(to.get(), name, value.data(), static_cast<std::size_t>(size), 0);
    }
}

/// Copies owner, extended attributes and mode. The owner first, because changing it clears mode bits.
bool copyMetadata(const FileDescriptor& file, const fs::path& target, const struct stat& old) {
    struct stat now {};
    if (::fstat(file.get(), &now) != 0) return false;
    const bool sameOwner = now.st_uid == old.st_uid && now.st_gid == old.st_gid;
    if (!sameOwner && ::fchown(file.get(), old.st_uid, old.st_gid) != 0) return false;
    copyAttributes(target, file);
    return ::fchmod(file.get(), old.st_mode & 07777) == 0;
}

FileStatus replaceByRename(const fs::path& target, const std::optional<struct stat>& old,
                           std::string_view bytes) {
    TemporaryFile::removeStale(folderOf(target));
    TemporaryFile file(folderOf(target));
    const bool replaced = file.isOpen() && (!old || copyMetadata(file.file(), target, *old)) &&
                          file.write(bytes) && file.replace(target);
    return replaced ? FileStatus::done : fileStatusOf(errno);
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
    const FileStatus replaced = replaceByRename(target, old, bytes);
    if (replaced == FileStatus::done) dropUnfinishedSave(target);
    return replaced == FileStatus::done || !old ? replaced : overwriteFile(target, bytes);
}
