#pragma once

#include "core/files/FileStatus.h"

#include <string>
#include <string_view>

/// Writes a file whole or not at all, also when the process is killed: a temporary file beside it takes its
/// place. A symbolic link stays and its target is replaced; permissions, owner and extended attributes are
/// kept. Where the folder allows no new file or the disk is full, but the file may be written and the new one
/// fits, it is overwritten as `overwriteFile` does. Anything but FileStatus::done and FileStatus::postponed
/// leaves the old file as it was; files that may not be written and whatever is no regular file are left
/// alone.
[[nodiscard]] FileStatus replaceFile(const std::string& path, std::string_view bytes);
