#pragma once

#include <filesystem>

/// Makes a folder and its missing parents, for the user alone (mode 0700). False when that fails.
bool makeFolder(const std::filesystem::path& folder);

/// The folder of the program's own state: `$XDG_STATE_HOME/tulplayer`, by default `~/.local/state/tulplayer`.
/// It may not exist yet. Empty when HOME is not set.
std::filesystem::path stateFolder();

/// The folder of files that need not outlast the session: `$XDG_RUNTIME_DIR/tulplayer`, in memory on most
/// systems. It may not exist yet. Empty when the variable is not set.
std::filesystem::path runtimeFolder();

/// The folder of a file, "." for a name alone.
std::filesystem::path folderOf(const std::filesystem::path& file);

/// The file that writing to `path` would write to: follows symbolic links, also dangling ones.
std::filesystem::path followLinks(const std::filesystem::path& path);
