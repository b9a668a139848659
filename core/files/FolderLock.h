#pragma once

#include "core/files/FileDescriptor.h"

#include <chrono>
#include <filesystem>

enum class Locking {
    done,
    busy,       ///< Another holder did not release the lock in time.
    impossible, ///< The file is not open, or its file system has no locks.
};

/// Takes an exclusive lock (flock) on an open file or folder. The kernel releases it when the descriptor is
/// closed, also by the death of the process.
Locking lockFile(const FileDescriptor& file, std::chrono::milliseconds maxWait);

/// Holds an exclusive lock on a folder, against other programs and threads that lock it, too. The folder
/// itself is locked, so no lock file is needed. Where its file system has no locks or the folder cannot be
/// opened, the state folder is locked instead.
class FolderLock {
public:
    /// Waits up to a second for another holder to release the lock.
    explicit FolderLock(const std::filesystem::path& folder);

    /// False when another holder did not release it in time. True where locks are impossible.
    [[nodiscard]] bool isHeld() const { return m_held; }

private:
    FileDescriptor m_folder;
    bool m_held = false;
};
