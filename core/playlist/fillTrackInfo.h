#pragma once

#include "core/playlist/ReadingProgress.h"
#include "core/playlist/TulPlaylistEntry.h"

#include <memory>
#include <span>

/// Fills what is missing in `entries` from the files' tags, with the same result as
/// TulPlaylistEntry::readTrackInfo(true) on one after another. Answers how many entries from the first on are
/// filled: all of them, unless `progress` ended the reading.
///
/// Threads: the caller waits while as many workers as there are cores read; nobody else may touch the entries
/// meanwhile. No worker starts when nothing is missing.
std::size_t fillTrackInfo(std::span<const std::unique_ptr<TulPlaylistEntry>> entries,
                          const ReadingProgress& progress);
