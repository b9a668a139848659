#pragma once

#include <microhttpd.h>

namespace bass {

/// The calls of libmicrohttpd that are made here. It is loaded when something is first shared.
///
/// Threads: any.
struct HttpLibrary {
    decltype(&MHD_start_daemon) startDaemon;
    decltype(&MHD_stop_daemon) stopDaemon;
    decltype(&MHD_run) run;
    decltype(&MHD_get_timeout) getTimeout;
    decltype(&MHD_get_daemon_info) daemonInfo;
    decltype(&MHD_get_connection_info) connectionInfo;
    decltype(&MHD_suspend_connection) suspendConnection;
    decltype(&MHD_resume_connection) resumeConnection;
    decltype(&MHD_queue_response) queueResponse;
    decltype(&MHD_create_response_from_buffer) createResponse;
    decltype(&MHD_add_response_header) addResponseHeader;
    decltype(&MHD_destroy_response) destroyResponse;

    /// Null when it is not installed. It stays loaded.
    static const HttpLibrary* load();
};

} // namespace bass
