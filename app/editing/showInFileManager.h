#pragma once

#include <string>

namespace app {

/// Opens the folder of a file, with the file selected where the desktop can do that. Does not wait for the
/// file manager. Main thread.
void showInFileManager(const std::string& path);

} // namespace app
