#pragma once

#include "app/Command.h"

#include <QWidget>

#include <memory>

namespace app {

/// A list of the commands that have keys.
[[nodiscard]] std::unique_ptr<QWidget> makeKeyList(const Commands& commands);

} // namespace app
