#include "app/CommandLine.h"

#include "app/FileTypes.h"
#include "core/playlist/resolveEntrySource.h"

#include <filesystem>
#include <system_error>

namespace app {
namespace {

std::string absoluteSource(const std::string& argument) {
    if (isAddress(argument)) return sourceFromAddress(argument);
    std::error_code noWorkingFolder;
    const auto path = std::filesystem::absolute(argument, noWorkingFolder);
    return noWorkingFolder ? argument : path.lexically_normal().string();
}

} // namespace

CommandLine CommandLine::parse(const std::vector<std::string>& arguments) {
    CommandLine line;
    bool optionsEnded = false;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const std::string& argument = arguments[i];
        if (!optionsEnded && argument == "--") {
            optionsEnded = true;
        } else if (!optionsEnded && argument == "--demo" && i + 1 < arguments.size()) {
            line.demoScreenshot = arguments[++i];
        } else if (!argument.empty()) {
            line.sources.push_back(absoluteSource(argument));
        }
    }
    return line;
}

} // namespace app
