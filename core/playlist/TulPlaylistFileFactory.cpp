#include "core/playlist/TulPlaylistFileFactory.h"

#include "core/playlist/TulPlaylistFileM3U.h"
#include "core/playlist/TulPlaylistFileTUQ.h"

std::unique_ptr<ITulPlaylistFile> TulPlaylistFileFactory::createPlaylistFile(const std::string& path) const {
    const auto dot = path.rfind('.');
    const std::string extension = dot == std::string::npos ? std::string() : path.substr(dot + 1);
    if (extension == "m3u" || extension == "tuv") return std::make_unique<TulPlaylistFileM3U>();
    return std::make_unique<TulPlaylistFileTUQ>();
}
