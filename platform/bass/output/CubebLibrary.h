#pragma once

#include <cubeb/cubeb.h>

#include <memory>

namespace bass {

/// The calls of libcubeb that are made here. The library, and with it the client libraries of every sound
/// server, is loaded when it is first asked for: that takes as long as a third of a window.
///
/// Threads: the control thread loads it; after that any thread may call what cubeb allows it to.
struct CubebLibrary {
    decltype(&cubeb_init) init;
    decltype(&cubeb_destroy) destroy;
    decltype(&cubeb_get_backend_id) backendId;
    decltype(&cubeb_get_max_channel_count) maxChannelCount;
    decltype(&cubeb_stream_init) streamInit;
    decltype(&cubeb_stream_destroy) streamDestroy;
    decltype(&cubeb_stream_start) streamStart;
    decltype(&cubeb_stream_stop) streamStop;
    decltype(&cubeb_stream_get_position) streamPosition;
    decltype(&cubeb_stream_register_device_changed_callback) onDeviceChanged;

    /// Null when it is not installed. It stays loaded.
    static const CubebLibrary* load();
};

struct CubebDeleter {
    const CubebLibrary* library = nullptr;
    void operator()(cubeb* context) const { library->destroy(context); }
    void operator()(cubeb_stream* stream) const { library->streamDestroy(stream); }
};
using CubebContext = std::unique_ptr<cubeb, CubebDeleter>;
using CubebStream = std::unique_ptr<cubeb_stream, CubebDeleter>;

} // namespace bass
