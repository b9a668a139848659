#pragma once

#include "core/files/FileStatus.h"

#include <optional>
#include <string>

/// The whole of a file, as FileReader reads it. Nothing when it cannot be read to its end; `status` says why.
std::optional<std::string> readFile(const std::string& path, FileStatus& status);
