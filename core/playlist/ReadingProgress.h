#pragma once

#include <cstddef>
#include <functional>

/// Asked about every 50 ms, on the thread that waits for entries to be read, while `done` of `total` have
/// been. Answering false ends the reading: what has been read so far stays, in order. May be empty.
using ReadingProgress = std::function<bool(std::size_t done, std::size_t total)>;
