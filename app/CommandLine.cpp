#include "app/CommandLine.h"

#include "app/FileTypes.h"
#include "core/playlist/resolveEntrySource.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <filesystem>
#include <optional>
#include <string_view>
#include <system_error>

namespace app {
namespace {

constexpr std::array<std::string_view, 4> actions{"play-pause", "next", "previous", "stop"};

/// Those that QApplication takes with a value, behind one or two dashes.
constexpr std::array<std::string_view, 8> toolkitOptions{
    "platform", "platformtheme", "style", "stylesheet", "session", "display", "geometry", "qwindowgeometry"};

std::string absoluteSource(const std::string& argument) {
    if (isAddress(argument)) return sourceFromAddress(argument);
    std::error_code noWorkingFolder;
    const auto path = std::filesystem::absolute(argument, noWorkingFolder);
    return noWorkingFolder ? argument : path.lexically_normal().string();
}

/// Percent of full, or a difference with its sign.
bool isVolume(std::string_view text) {
    if (text.starts_with('+') || text.starts_with('-')) text.remove_prefix(1);
    unsigned value = 0;
    const char* const end = text.data() + text.size();
    const auto [rest, problem] = std::from_chars(text.data(), end, value);
    return problem == std::errc() && rest == end && value <= 100;
}

class Parser {
public:
    explicit Parser(const std::vector<std::string>& arguments) : m_arguments(arguments) {}

    CommandLine parse() {
        bool optionsEnded = false;
        while (m_next < m_arguments.size() && m_line.error.empty()) {
            const std::string& argument = m_arguments[m_next++];
            if (optionsEnded || !argument.starts_with('-') || argument == "-")
                addSource(argument);
            else if (argument == "--")
                optionsEnded = true;
            else
                takeOption(argument);
        }
        if (m_line.error.empty()) m_line.error = contradiction();
        return m_line;
    }

private:
    void addSource(const std::string& argument) {
        if (!argument.empty()) m_line.sources.push_back(absoluteSource(argument));
    }

    void takeOption(const std::string& argument) {
        const std::size_t equals = argument.find('=');
        const std::string option = argument.substr(0, equals);
        m_attached.reset();
        if (equals != std::string::npos) m_attached = argument.substr(equals + 1);
        const bool isTaken = takePlain(option) || takeWithValue(option) || takeToolkitOption(option);
        if (!isTaken) return fail("unknown option " + argument);
        if (m_attached) fail(option + " takes no value");
    }

    bool takePlain(const std::string& option) {
        const std::string name = option.substr(std::min<std::size_t>(2, option.size()));
        if (option == "--help" || option == "-h")
            m_line.showsHelp = true;
        else if (option == "--version")
            m_line.showsVersion = true;
        else if (option == "--new-window")
            m_line.isNewWindow = true;
        else if (option == "--json")
            m_json = true;
        else if (option.starts_with("--") && std::ranges::find(actions, name) != actions.end())
            m_line.controls.push_back({name, {}});
        else
            return false;
        return true;
    }

    bool takeWithValue(const std::string& option) {
        if (option == "--volume") {
            const std::string volume = value(option);
            if (m_line.error.empty() && !isVolume(volume))
                fail("--volume takes 0 to 100, or a difference like +5 or -5");
            m_line.controls.push_back({"volume", volume});
        } else if (option == "--demo") {
            m_line.demoScreenshot = value(option);
        } else if (option == "--status") {
            if (m_attached && *m_attached != "json") fail("--status takes no value but json");
            m_line.status = m_attached ? CommandLine::Status::json : CommandLine::Status::line;
            m_attached.reset();
        } else {
            return false;
        }
        return true;
    }

    bool takeToolkitOption(const std::string& option) {
        const std::string name = option.substr(option.find_first_not_of('-') == 1 ? 1 : 2);
        if (std::ranges::find(toolkitOptions, name) == toolkitOptions.end()) return false;
        value(option);
        return true;
    }

    /// What follows the option, behind "=" or as the next argument.
    std::string value(const std::string& option) {
        if (m_attached) {
            std::string attached = *m_attached;
            m_attached.reset();
            return attached;
        }
        if (m_next < m_arguments.size()) return m_arguments[m_next++];
        fail(option + " needs a value");
        return {};
    }

    std::string contradiction() {
        if (m_json && m_line.status == CommandLine::Status::none) return "--json goes with --status";
        if (m_json) m_line.status = CommandLine::Status::json;
        const bool starts = !m_line.sources.empty() || m_line.isNewWindow || !m_line.demoScreenshot.empty();
        if (m_line.controlsPlayer() && starts)
            return "what controls the running player goes without files and --new-window";
        return {};
    }

    void fail(const std::string& error) {
        if (m_line.error.empty()) m_line.error = error;
    }

    const std::vector<std::string>& m_arguments;
    std::size_t m_next = 0;
    std::optional<std::string> m_attached; ///< The value behind "=", until an option has taken it.
    bool m_json = false;
    CommandLine m_line;
};

} // namespace

CommandLine CommandLine::parse(const std::vector<std::string>& arguments) {
    return Parser(arguments).parse();
}

const char* CommandLine::help() {
    return R"(Usage: tulplayer [OPTION...] [FILE, FOLDER, PLAYLIST or ADDRESS...]

Plays audio files and internet streams. If the player runs already, it appends what is named and plays the
first of it; without names, it comes to the front.

      --new-window       start another player, whatever runs already

Control the player that runs:
      --play-pause       play or pause; starts the player if none runs
      --next             play the next entry
      --previous         play the previous entry
      --stop             stop
      --volume N         set the volume, 0 to 100; +N and -N change it
      --status           print in one line what plays
      --status=json      print it as JSON; also --status --json

  -h, --help             print this help
      --version          print the version
      --                 what follows is no option

Exit status: 0 when all went well; 1 when no player runs or it does not answer; 2 for wrong arguments.
)";
}

} // namespace app
