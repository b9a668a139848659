#include "app/CommandLine.h"

#include "core/playlist/resolveEntrySource.h"

#include <QByteArray>

#include <algorithm>
#include <filesystem>
#include <string_view>
#include <system_error>

namespace app {
namespace {

constexpr std::string_view fileScheme = "file://";

/// The path of a `file:` address, whose host, if there is one, is this machine.
std::string localPath(std::string_view address) {
    const std::string_view rest = address.substr(fileScheme.size());
    const std::string_view path = rest.substr(std::min(rest.find('/'), rest.size()));
    return QByteArray::fromPercentEncoding(QByteArray(path.data(), static_cast<qsizetype>(path.size())))
        .toStdString();
}

std::string absoluteSource(const std::string& argument) {
    if (argument.starts_with(fileScheme)) return localPath(argument);
    if (isAddress(argument)) return argument;
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
