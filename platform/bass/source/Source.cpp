#include "platform/bass/source/Source.h"

#include "platform/bass/source/DecodedSource.h"
#include "platform/bass/source/FileIo.h"
#include "platform/bass/source/NetworkSource.h"

#include <algorithm>
#include <cctype>

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
    // FFmpeg knows its protocols in lower case only.
    const std::size_t colon = std::min(url.find(':'), url.size());
    std::string scheme = url.substr(0, colon);
    std::ranges::transform(scheme, scheme.begin(), [](unsigned char c) { return std::tolower(c); });
    if ((scheme != "http" && scheme != "https") || url.compare(colon, 3, "://") != 0) return nullptr;
    av_log_set_level(AV_LOG_QUIET);
    return NetworkSource::open(scheme + url.substr(colon));
}

} // namespace bass
