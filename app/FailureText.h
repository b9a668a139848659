#pragma once

#include "core/files/FileStatus.h"
#include "core/playlist/TulFailure.h"

#include <QString>

#include <string>

namespace app {

/// One sentence without a full stop that says why `source` does not play; empty where nothing failed. Of an
/// address it names the host alone.
QString failureText(const TulFailure& failure, const std::string& source);

/// The same for a file that could not be read or written whole. An empty path stands for changes that could
/// not be stored.
QString fileStatusText(FileStatus status, const std::string& path);

} // namespace app
