#pragma once

#include <string>
#include <vector>

namespace app {

/// What the program was started with.
struct CommandLine {
    /// Absolute paths and addresses, in order: playlists are opened, everything else is appended. Paths are
    /// bytes, whatever they hold.
    std::vector<std::string> sources;
    /// Where the demonstration run leaves its screenshot; empty for an ordinary start.
    std::string demoScreenshot;

    /// `arguments` without the program's name. Relative paths are taken from the working directory; `file:`
    /// addresses become paths.
    static CommandLine parse(const std::vector<std::string>& arguments);
};

} // namespace app
