#pragma once

#include <filesystem>

/// Makes a folder, and those above it that are missing, for the user alone (mode 0700). False when it is
/// still missing.
bool makeFolder(const std::filesystem::path& folder);

/// Where the program keeps what is not a document of the user's: `$XDG_STATE_HOME/tulplayer`, by default
/// below
/// `~/.local/state`. It may not exist yet. Empty when there is no home.
std::filesystem::path stateFolder();

/// Where it keeps what need not survive the session: `$XDG_RUNTIME_DIR/tulplayer`, in memory on most systems.
/// It may not exist yet. Empty when there is no such folder.
std::filesystem::path runtimeFolder();

/// The folder of a file, "." for a name alone.
std::filesystem::path folderOf(const std::filesystem::path& file);

/// The file that writing to `path` would write to: symbolic links followed, also those that lead nowhere yet.
std::filesystem::path followLinks(const std::filesystem::path& path);
