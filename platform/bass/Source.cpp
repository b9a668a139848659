#include "platform/bass/Source.h"

#include "platform/bass/DecodedSource.h"
#include "platform/bass/FileIo.h"
#include "platform/bass/NetworkSource.h"

#include <strings.h>

extern "C" {
#include <libavutil/log.h>
}

namespace bass {

std::unique_ptr<Source> openFile(const std::string& path, Format format) {
    av_log_set_level(AV_LOG_QUIET);
    auto file = FileIo::open(path);
    if (!file) return nullptr;
    return DecodedSource::open(std::move(file), format);
}

std::unique_ptr<Source> openUrl(const std::string& url) {
    const auto startsWith = [&](const char* scheme, std::size_t size) {
        return strncasecmp(url.c_str(), scheme, size) == 0;
    };
    if (!startsWith("http://", 7) && !startsWith("https://", 8)) return nullptr;
    av_log_set_level(AV_LOG_QUIET);
    return NetworkSource::open(url);
}

} // namespace bass
