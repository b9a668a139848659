#pragma once

#include <filesystem>
#include <string>

/// The file that writing to `path` would write to: symbolic links followed, also those that lead nowhere yet.
std::filesystem::path followLinks(const std::filesystem::path& path);

/// Writes a file whole or not at all: a temporary file beside it takes its place. A symbolic link stays and
/// its target is replaced; permissions and owner are kept. Where the folder allows no new file but the file
/// may be written, it is overwritten in place, once the disk has promised the room. False, and the old file
/// as it was, when that fails; files that may not be written and whatever is no regular file are left alone.
[[nodiscard]] bool replaceFile(const std::string& path, const std::string& bytes);
