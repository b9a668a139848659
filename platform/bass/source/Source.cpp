#include "platform/bass/source/Source.h"

#include "platform/bass/source/DecodedSource.h"
#include "platform/bass/source/FfmpegMemory.h"
#include "platform/bass/source/FileIo.h"
#include "platform/bass/source/ProtocolLog.h"
#include "platform/bass/source/ReconnectingSource.h"

#include <algorithm>
#include <cctype>

namespace bass {
std::optional<std::string> normalizedAddress(const std::string& address) {
    constexpr const char* blanks = " \t\r\n";
    const std::size_t first = address.find_first_not_of(blanks);
    if (first == std::string::npos) return std::nullopt;
    std::string url = address.substr(first, address.find_last_not_of(blanks) - first + 1);
    const std::size_t end = url.find("://");
    if (end == std::string::npos) return std::nullopt;
    std::transform(url.begin(), url.begin() + static_cast<std::ptrdiff_t>(end), url.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    const std::string scheme = url.substr(0, end);
    const std::string host = url.substr(end + 3);
    // FFmpeg sends the address unescaped: a line end in it would inject a header.
    const auto isControl = [](unsigned char c) { return c < 0x20 || c == 0x7f; };
    if (std::ranges::any_of(url, isControl)) return std::nullopt;
    const bool hasHost = !host.empty() && std::string("/?#:").find(host[0]) == std::string::npos;
    if ((scheme != "http" && scheme != "https") || !hasHost) return std::nullopt;
    return url;
}

bool isHttpAddress(const std::string& address) {
    return normalizedAddress(address).has_value();
}

OpenedSource openFile(const std::string& path, Format format, std::shared_ptr<Cancel> cancel) {
    silenceFfmpeg();
    FileIo::Opened opened = FileIo::open(path, std::move(cancel));
    if (!opened.file) return {nullptr, opened.failure};
    limitFfmpegMemory(opened.file->size());
    return DecodedSource::open(std::move(opened.file), format);
}

OpenedSource openUrl(const std::string& address, std::shared_ptr<Cancel> cancel) {
    return openUrl(address, std::move(cancel), NetworkLimits());
}

OpenedSource openUrl(const std::string& address, std::shared_ptr<Cancel> cancel,
                     const NetworkLimits& limits) {
    const std::optional<std::string> url = normalizedAddress(address);
    if (!url) return {nullptr, Failure::notFound};
    silenceFfmpeg();
    limitFfmpegMemory(-1);
    return ReconnectingSource::open(*url, limits, std::move(cancel));
}

} // namespace bass
