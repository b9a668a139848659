#include "core/files/FileStatus.h"

#include <cerrno>

FileStatus fileStatusOf(int error) {
    switch (error) {
    case 0:
        return FileStatus::done;
    case ENOENT:
    case ENOTDIR:
        return FileStatus::notFound;
    case EACCES:
    case EPERM:
    case EROFS:
    case ELOOP:
    case EISDIR:
        return FileStatus::notAllowed;
    case ENOSPC:
    case EDQUOT:
    case EFBIG:
        return FileStatus::noSpace;
    default:
        return FileStatus::failed;
    }
}
