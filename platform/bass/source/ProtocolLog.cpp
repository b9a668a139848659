#include "platform/bass/source/ProtocolLog.h"

#include <cstdarg>
#include <cstring>
#include <string_view>

extern "C" {
#include <libavutil/log.h>
}

namespace bass {
namespace {

thread_local ProtocolLog* current = nullptr;

/// Callback of av_log. Matches the format string, which does not depend on values or language.
void readLine(void* context, int level, const char* format, va_list values) {
    if (!current || !context || !format) return;
    const AVClass* type = *static_cast<const AVClass* const*>(context);
    const char* name = type && type->item_name ? type->item_name(context) : nullptr;
    if (!name) return;
    const std::string_view protocol = name;
    const std::string_view text = format;
    if (protocol == "http" || protocol == "https") {
        if (text.starts_with("http_code=%d")) current->httpStatus = va_arg(values, int);
        if (text.starts_with("header='%s'")) current->headerBytes += std::strlen(va_arg(values, const char*));
        return;
    }
    if (level > AV_LOG_ERROR || (protocol != "tcp" && protocol != "tls")) return;
    current->connecting = true;
    if (text.starts_with("Failed to resolve hostname")) current->nameNotFound = true;
    if (protocol == "tls" && text.find("certificate") != std::string_view::npos) current->certificate = true;
}

} // namespace

ProtocolLogScope::ProtocolLogScope(ProtocolLog& log) {
    current = &log;
}

ProtocolLogScope::~ProtocolLogScope() {
    current = nullptr;
}

void silenceFfmpeg() {
    av_log_set_callback(readLine);
}

} // namespace bass
