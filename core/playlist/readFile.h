#pragma once

#include <optional>
#include <string>

/// The whole of a regular file of at most 256 MiB. Nothing for anything else, and for what cannot be read to
/// its end.
std::optional<std::string> readFile(const std::string& path);
