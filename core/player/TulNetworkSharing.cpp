#include "core/player/TulNetworkSharing.h"

#include "core/background/besideProgram.h"
#include "core/player/TulStream.h"
#include "platform/bass/bassenc.h"

#include <iomanip>
#include <sstream>
#include <utility>

namespace {

/// Options of oggenc: raw 16-bit stereo input, constant 160 kbit/s.
constexpr const char* options = " -r -R 44100 -M 160 -m 160 -";
constexpr const char* defaultName = "Tulplayer";
constexpr DWORD bufferBytes = 40000;
constexpr DWORD burstBytes = 40000;

/// Tries oggenc in the working directory, beside this program, and in PATH. 0 when none starts.
HENCODE startEncoder(HSTREAM channel) {
    std::ostringstream beside;
    beside << std::quoted(besideProgram("oggenc"));
    for (const std::string& program : {std::string("./oggenc"), beside.str(), std::string("oggenc")}) {
        const std::string commandLine = program + options;
        if (const HENCODE started =
                BASS_Encode_Start(channel, commandLine.c_str(), BASS_ENCODE_NOHEAD, nullptr, nullptr))
            return started;
    }
    return 0;
}

} // namespace

TulNetworkSharing::~TulNetworkSharing() {
    if (encoder != 0) stop();
}

bool TulNetworkSharing::configure(const std::string& newName, std::uint16_t newPort) {
    name = newName.empty() ? defaultName : newName;
    if (encoder != 0) BASS_Encode_ServerSetName(encoder, name.c_str());
    if (std::exchange(wantedPort, newPort) == newPort || encoder == 0) return false;
    stop();
    return true;
}

std::uint32_t TulNetworkSharing::listenerCount() const {
    return BASS_Encode_ServerGetCount(encoder);
}

std::int32_t TulNetworkSharing::start(const TulStream& stream) {
    dropDeadEncoder();
    if (encoder != 0) {
        BASS_Encode_SetChannel(encoder, stream.handle);
    } else {
        encoder = startEncoder(stream.handle);
        isEncoderMissing = encoder == 0 && stream.handle != 0;
        BASS_Encode_ServerSetName(encoder, name.c_str());
        port = BASS_Encode_ServerInit(encoder, std::to_string(wantedPort).c_str(), bufferBytes, burstBytes, 0,
                                      nullptr, nullptr);
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
