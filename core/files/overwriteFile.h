#pragma once

#include "core/files/FileStatus.h"

#include <filesystem>
#include <string_view>

/// Overwrites a file where it is, for folders that allow no new file and for full disks: a copy of the new
/// bytes is kept in the state folder (or, where that is full, in the runtime folder) until all are written.
/// A process that is killed before leaves that copy, from which `completeSaves` finishes the file.
///
/// FileStatus::postponed when the disk failed halfway: the copy stays. Any other status but FileStatus::done
/// leaves the old file as it was. Any thread.
FileStatus overwriteFile(const std::filesystem::path& target, std::string_view bytes);

/// Finishes what killed programs have begun to overwrite. To be called when the program starts, and before a
/// file is read. Any thread; may block on the disk.
void completeSaves();

/// Drops what a killed program has left of the save of a file that has been replaced since.
void dropUnfinishedSave(const std::filesystem::path& target);
