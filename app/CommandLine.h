#pragma once

#include <string>
#include <vector>

namespace app {

/// What the program was started with.
struct CommandLine {
    /// What a running player is asked to do: an action of `ApplicationService`, and for `volume` its value.
    struct Control {
        std::string action;
        std::string value;
    };
    enum class Status { none, line, json };

    /// Absolute paths and addresses, in order. Paths are bytes, whatever they hold.
    std::vector<std::string> sources;
    /// In order, before `status`. With one of these or a status, no player is started; but `play-pause` alone
    /// starts one where none runs.
    std::vector<Control> controls;
    Status status = Status::none;
    bool showsHelp = false;
    bool showsVersion = false;
    /// A player of its own, whatever runs already.
    bool isNewWindow = false;
    /// Where the demonstration run leaves its screenshot; empty for an ordinary start.
    std::string demoScreenshot;
    /// Why the arguments cannot be obeyed; empty when they can.
    std::string error;

    /// `arguments` without the program's name. Relative paths are taken from the working directory; `file:`
    /// addresses become paths. Options of the toolkit (`-platform NAME`) are left to it.
    static CommandLine parse(const std::vector<std::string>& arguments);
    static const char* help();

    [[nodiscard]] bool controlsPlayer() const { return !controls.empty() || status != Status::none; }
};

} // namespace app
