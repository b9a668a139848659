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
namespace {

/// Without the blanks and line ends that an address brings along when it is copied.
std::string trimmed(const std::string& address) {
    constexpr const char* blanks = " \t\r\n";
    const std::size_t first = address.find_first_not_of(blanks);
    if (first == std::string::npos) return {};
    return address.substr(first, address.find_last_not_of(blanks) - first + 1);
}

} // namespace

std::unique_ptr<Source> openFile(const std::string& path, Format format) {
    av_log_set_level(AV_LOG_QUIET);
    auto file = FileIo::open(path);
    if (!file) return nullptr;
    return DecodedSource::open(std::move(file), format);
}

std::unique_ptr<Source> openUrl(const std::string& address) {
    const std::string url = trimmed(address);
    // FFmpeg knows its protocols in lower case only.
    const std::size_t colon = std::min(url.find(':'), url.size());
    std::string scheme = url.substr(0, colon);
    std::ranges::transform(scheme, scheme.begin(), [](unsigned char c) { return std::tolower(c); });
    if ((scheme != "http" && scheme != "https") || url.compare(colon, 3, "://") != 0) return nullptr;
    av_log_set_level(AV_LOG_QUIET);
    return NetworkSource::open(scheme + url.substr(colon));
}

} // namespace bass
