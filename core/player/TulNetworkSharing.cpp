#include "core/player/TulNetworkSharing.h"

#include "core/player/TulStream.h"
#include "platform/bass/bassenc.h"

namespace {

/// Raw 16-bit stereo in, 160 kbit/s throughout.
constexpr const char* commandLine = "./oggenc -r -R 44100 -M 160 -m 160 -";
constexpr const char* sharingPort = "9090";
constexpr DWORD bufferBytes = 40000;
constexpr DWORD burstBytes = 40000;

} // namespace

TulNetworkSharing::~TulNetworkSharing() {
    if (encoder != 0) stop();
}

std::int32_t TulNetworkSharing::start(const TulStream& stream) {
    dropDeadEncoder();
    if (encoder != 0) {
        BASS_Encode_SetChannel(encoder, stream.handle);
    } else {
        encoder = BASS_Encode_Start(stream.handle, commandLine, BASS_ENCODE_NOHEAD, nullptr, nullptr);
        port = BASS_Encode_ServerInit(encoder, sharingPort, bufferBytes, burstBytes, 0, nullptr, nullptr);
    }
    return static_cast<std::int32_t>(port);
}

void TulNetworkSharing::stop() {
    BASS_Encode_Stop(encoder);
    encoder = 0;
    port = 0;
}

void TulNetworkSharing::dropDeadEncoder() {
    if (encoder != 0 && !isActive()) stop();
}

bool TulNetworkSharing::isActive() const {
    return BASS_Encode_IsActive(encoder) != BASS_ACTIVE_STOPPED;
}
