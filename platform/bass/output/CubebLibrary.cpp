#include "platform/bass/output/CubebLibrary.h"

#include "platform/bass/LoadedLibrary.h"

#include <optional>

namespace bass {
namespace {

std::optional<CubebLibrary> loadLibrary() {
    LoadedLibrary library(TUL_CUBEB_LIBRARY);
    CubebLibrary calls{};
    library.find("cubeb_init", calls.init);
    library.find("cubeb_destroy", calls.destroy);
    library.find("cubeb_get_backend_id", calls.backendId);
    library.find("cubeb_get_max_channel_count", calls.maxChannelCount);
    library.find("cubeb_stream_init", calls.streamInit);
    library.find("cubeb_stream_destroy", calls.streamDestroy);
    library.find("cubeb_stream_start", calls.streamStart);
    library.find("cubeb_stream_stop", calls.streamStop);
    library.find("cubeb_stream_get_position", calls.streamPosition);
    library.find("cubeb_stream_register_device_changed_callback", calls.onDeviceChanged);
    if (!library.isComplete()) return std::nullopt;
    return calls;
}

} // namespace

const CubebLibrary* CubebLibrary::load() {
    static const std::optional<CubebLibrary> library = loadLibrary();
    return library ? &*library : nullptr;
}

} // namespace bass
