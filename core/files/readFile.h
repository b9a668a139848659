#pragma once

#include "core/files/FileStatus.h"

#include <optional>
#include <string>

/// Reads a whole file through FileReader. None when it cannot be read to its end; `status` says why.
std::optional<std::string> readFile(const std::string& path, FileStatus& status);
