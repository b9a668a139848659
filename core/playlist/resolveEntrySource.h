#pragma once

#include <string>

/// An entry's source is an address when it contains "://", and a path when not.
bool isAddress(const std::string& source);

/// The source to play for one written in a playlist file: addresses and paths that
/// begin with a slash or backslash as they are, anything else with `baseDirectory` put directly in front.
std::string resolveEntrySource(const std::string& source, const std::string& baseDirectory);

/// `path` up to and including its last slash or backslash; empty when it has none.
std::string playlistFolder(const std::string& path);
