#pragma once

#include "core/files/FileStatus.h"
#include "core/playlist/TulFailure.h"

#include <QString>

#include <string>

namespace app {

/// Why `source` does not play, as one sentence without a full stop; empty without a failure. Of an address it
/// contains only the host.
QString failureText(const TulFailure& failure, const std::string& source);

/// The same for a file that could not be read or written completely. An empty path means unsaved changes that
/// could not be stored.
QString fileStatusText(FileStatus status, const std::string& path);

} // namespace app
