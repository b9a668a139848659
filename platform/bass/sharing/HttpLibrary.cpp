#include "platform/bass/sharing/HttpLibrary.h"

#include "platform/bass/LoadedLibrary.h"

#include <optional>

namespace bass {
namespace {

std::optional<HttpLibrary> loadLibrary() {
    LoadedLibrary library(TUL_HTTP_LIBRARY);
    HttpLibrary calls{};
    library.find("MHD_start_daemon", calls.startDaemon);
    library.find("MHD_stop_daemon", calls.stopDaemon);
    library.find("MHD_run", calls.run);
    library.find("MHD_get_timeout", calls.getTimeout);
    library.find("MHD_get_daemon_info", calls.daemonInfo);
    library.find("MHD_get_connection_info", calls.connectionInfo);
    library.find("MHD_suspend_connection", calls.suspendConnection);
    library.find("MHD_resume_connection", calls.resumeConnection);
    library.find("MHD_queue_response", calls.queueResponse);
    library.find("MHD_create_response_from_buffer", calls.createResponse);
    library.find("MHD_add_response_header", calls.addResponseHeader);
    library.find("MHD_destroy_response", calls.destroyResponse);
    if (!library.isComplete()) return std::nullopt;
    return calls;
}

} // namespace

const HttpLibrary* HttpLibrary::load() {
    static const std::optional<HttpLibrary> library = loadLibrary();
    return library ? &*library : nullptr;
}

} // namespace bass
