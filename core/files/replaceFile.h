#pragma once

#include "core/files/FileStatus.h"

#include <string>
#include <string_view>

/// Writes a file whole or not at all: a temporary file beside it takes its place. A symbolic link stays and
/// its target is replaced; permissions and owner are kept. Where the folder allows no new file but the file
/// may be written, it is overwritten in place, once the disk has promised the room. Anything but
/// FileStatus::done leaves the old file as it was; files that may not be written and whatever is no regular
/// file are left alone.
[[nodiscard]] FileStatus replaceFile(const std::string& path, std::string_view bytes);
