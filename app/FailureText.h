#pragma once

#include "core/playlist/TulFailure.h"

#include <QString>

#include <string>

namespace app {

/// One sentence without a full stop that says why `source` does not play; empty where nothing failed. Of an
/// address it names the host alone.
QString failureText(const TulFailure& failure, const std::string& source);

} // namespace app
