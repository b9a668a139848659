#pragma once

#include "core/files/FileStatus.h"

#include <optional>
#include <string>

/// The whole of a regular file of at most 256 MiB. Nothing for anything else, and for what cannot be read to
/// its end; `status` says why.
std::optional<std::string> readFile(const std::string& path, FileStatus& status);
