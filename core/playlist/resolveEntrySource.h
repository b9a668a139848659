#pragma once

#include <string>

/// True for an address: a source that contains "://". Others are paths.
bool isAddress(const std::string& source);

/// Resolves a source of a playlist file: addresses and paths that begin with a slash or backslash are
/// unchanged, to others `baseDirectory` is prepended without a separator.
std::string resolveEntrySource(const std::string& source, const std::string& baseDirectory);

/// `path` up to and including its last slash or backslash; empty when it has none.
std::string playlistFolder(const std::string& path);
