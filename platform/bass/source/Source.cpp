#include "platform/bass/source/Source.h"
#include "platform/bass/source/DecodedSource.h"
#include "platform/bass/source/FileIo.h"
extern "C" {
#include <libavutil/log.h>
}
namespace bass {
bool isHttpAddress(const std::string& address) { return address.starts_with("http"); }
OpenedSource openFile(const std::string& path, Format format, std::shared_ptr<Cancel>) {
    av_log_set_level(AV_LOG_QUIET);
    auto file = FileIo::open(path);
    if (!file) return {nullptr, Failure::notFound};
    auto s = DecodedSource::open(std::move(file), format);
    if (!s) return {nullptr, Failure::noAudio};
    return {std::move(s)};
}
OpenedSource openUrl(const std::string&, std::shared_ptr<Cancel>) { return {nullptr, Failure::refused}; }
}
