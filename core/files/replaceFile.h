#pragma once

#include "core/files/FileStatus.h"

#include <string>
#include <string_view>

/// Replaces a file atomically by renaming a temporary file in the same folder, and makes it if it is missing.
/// A symbolic link stays and its target is replaced; mode, owner and extended attributes are kept. Where that
/// fails (a folder that allows no new file, a full disk), an existing file is overwritten by `overwriteFile`.
/// Any status but FileStatus::done and FileStatus::postponed leaves the old file as it was. Files without
/// write permission and other than regular files are refused.
[[nodiscard]] FileStatus replaceFile(const std::string& path, std::string_view bytes);
