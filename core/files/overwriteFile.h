#pragma once

#include "core/files/FileStatus.h"

#include <filesystem>
#include <string_view>

/// Overwrites a file in place, for folders that allow no new file and for full disks. A copy of the new bytes
/// is kept in the state folder (or, where that is full, in the runtime folder) until all are written. If the
/// process is killed before, `completeSaves` finishes the file from that copy.
///
/// FileStatus::postponed when writing failed halfway: the copy stays. Any other status but FileStatus::done
/// leaves the old file as it was. Any thread.
FileStatus overwriteFile(const std::filesystem::path& target, std::string_view bytes);

/// Finishes the overwriting that killed programs began. Call it when the program starts, and before reading a
/// file. Any thread; may block on the disk.
void completeSaves();

/// Removes the copy that a killed program left of a file that has been saved since.
void dropUnfinishedSave(const std::filesystem::path& target);
