#include "platform/bass/output/CubebLibrary.h"

#include <dlfcn.h>

#include <optional>

namespace bass {
namespace {

template <typename Call> bool find(void* library, const char* name, Call& call) {
    call = reinterpret_cast<Call>(dlsym(library, name));
    return call != nullptr;
}

std::optional<CubebLibrary> loadLibrary() {
    void* library = dlopen(TUL_CUBEB_LIBRARY, RTLD_NOW | RTLD_LOCAL);
    if (!library) return std::nullopt;
    CubebLibrary calls{};
    const bool complete =
        find(library, "cubeb_init", calls.init) && find(library, "cubeb_destroy", calls.destroy) &&
        find(library, "cubeb_get_backend_id", calls.backendId) &&
        find(library, "cubeb_get_max_channel_count", calls.maxChannelCount) &&
        find(library, "cubeb_stream_init", calls.streamInit) &&
        find(library, "cubeb_stream_destroy", calls.streamDestroy) &&
        find(library, "cubeb_stream_start", calls.streamStart) &&
        find(library, "cubeb_stream_stop", calls.streamStop) &&
        find(library, "cubeb_stream_get_position", calls.streamPosition) &&
        find(library, "cubeb_stream_register_device_changed_callback", calls.onDeviceChanged);
    if (!complete) return std::nullopt;
    return calls;
}

} // namespace

const CubebLibrary* CubebLibrary::load() {
    static const std::optional<CubebLibrary> library = loadLibrary();
    return library ? &*library : nullptr;
}

} // namespace bass
