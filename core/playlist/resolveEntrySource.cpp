#include "core/playlist/resolveEntrySource.h"

bool isAddress(const std::string& source) {
    return source.find("://") != std::string::npos;
}

std::string resolveEntrySource(const std::string& source, const std::string& baseDirectory) {
    const bool isAbsolute = source.find_first_of("/\\") == 0;
    return isAddress(source) || isAbsolute ? source : baseDirectory + source;
}

std::string playlistFolder(const std::string& path) {
    const auto separator = path.find_last_of("/\\");
    return separator == std::string::npos ? std::string() : path.substr(0, separator + 1);
}
