#include "platform/bass/bassenc.h"

#include "platform/bass/Taps.h"
#include "platform/bass/sharing/Encoder.h"

#include <charconv>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string_view>

namespace {

/// The encoders by handle. Handles are never reused.
class Encoders {
public:
    static Encoders& instance() {
        static Encoders encoders;
        return encoders;
    }
    HENCODE add(std::shared_ptr<bass::Encoder> encoder) {
        const std::lock_guard lock(m_mutex);
        m_encoders.emplace(++m_lastHandle, std::move(encoder));
        return m_lastHandle;
    }
    std::shared_ptr<bass::Encoder> find(HENCODE handle) {
        const std::lock_guard lock(m_mutex);
        const auto found = m_encoders.find(handle);
        return found == m_encoders.end() ? nullptr : found->second;
    }
    std::shared_ptr<bass::Encoder> take(HENCODE handle) {
        const std::lock_guard lock(m_mutex);
        auto node = m_encoders.extract(handle);
        return node ? std::move(node.mapped()) : nullptr;
    }

private:
    std::mutex m_mutex;
    std::map<HENCODE, std::shared_ptr<bass::Encoder>> m_encoders;
    HENCODE m_lastHandle = 0;
};

std::optional<std::uint16_t> portNumber(const char* text) {
    if (!text) return std::nullopt;
    const std::string_view digits(text);
    std::uint16_t port = 0;
    const auto [end, error] = std::from_chars(digits.begin(), digits.end(), port);
    if (error != std::errc() || end != digits.end()) return std::nullopt;
    return port;
}

} // namespace

HENCODE BASS_Encode_Start(DWORD channel, const char* cmdline, DWORD flags, ENCODEPROC* proc, void* /*user*/) {
    if (!cmdline || flags != BASS_ENCODE_NOHEAD || proc) return 0;
    if (BASS_ChannelGetPosition(channel, BASS_POS_BYTE) == BASS_QWORD_ERROR) return 0;
    auto process = bass::EncoderProcess::start(cmdline);
    if (!process) return 0;
    return Encoders::instance().add(std::make_shared<bass::Encoder>(std::move(*process), channel));
}

DWORD BASS_Encode_ServerInit(HENCODE handle, const char* port, DWORD buffer, DWORD burst, DWORD flags,
                             ENCODECLIENTPROC* proc, void* /*user*/) {
    const auto encoder = Encoders::instance().find(handle);
    const auto number = portNumber(port);
    if (!encoder || !number || flags != 0 || proc) return 0;
    return encoder->serve(*number, std::min(buffer, burst));
}

BOOL BASS_Encode_ServerSetName(HENCODE handle, const char* name) {
    const auto encoder = Encoders::instance().find(handle);
    if (!encoder || !name) return false;
    encoder->setName(name);
    return true;
}

DWORD BASS_Encode_ServerGetCount(HENCODE handle) {
    const auto encoder = Encoders::instance().find(handle);
    return encoder ? encoder->listenerCount() : 0;
}

BOOL BASS_Encode_SetChannel(HENCODE handle, DWORD channel) {
    const auto encoder = Encoders::instance().find(handle);
    return encoder && encoder->follow(channel);
}

BOOL BASS_Encode_Stop(HENCODE handle) {
    return Encoders::instance().take(handle) != nullptr;
}

DWORD BASS_Encode_IsActive(HENCODE handle) {
    const auto encoder = Encoders::instance().find(handle);
    return encoder && encoder->isActive() ? BASS_ACTIVE_PLAYING : BASS_ACTIVE_STOPPED;
}
