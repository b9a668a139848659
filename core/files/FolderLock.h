#pragma once

#include "core/files/FileDescriptor.h"

#include <chrono>
#include <filesystem>

enum class Locking {
    done,
    busy,       ///< Someone else held the lock all the time.
    impossible, ///< The file system has no locks.
};

/// Excludes other programs, and other descriptors of this one, from what they lock as well: until the file or
/// folder is closed, also by a killed process.
Locking lockFile(const FileDescriptor& file, std::chrono::milliseconds waitsAtMost);

/// Excludes the other programs, and threads, that hold this lock of the same folder. The folder itself is
/// locked: no lock file is left behind, and none needs to be allowed. Where its file system has no locks or
/// the folder cannot be read, the state folder is locked instead.
class FolderLock {
public:
    /// Waits up to a second for another holder.
    explicit FolderLock(const std::filesystem::path& folder);

    /// False when another holder did not release it in time. Where nothing at all can be locked, true.
    [[nodiscard]] bool isHeld() const { return m_held; }

private:
    FileDescriptor m_folder;
    bool m_held = false;
};
