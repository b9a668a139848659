#include "tests/core/RecordingBass.h"

#include "platform/bass/bassenc.h"

#include <algorithm>
#include <sstream>
#include <utility>

namespace recording {

Bass bass;

std::string Bass::takeCalls() {
    std::string lines;
    for (const auto& call : std::exchange(calls, {}))
        lines += call + "\n";
    return lines;
}

namespace {

template <typename... Arguments> void record(const char* name, const Arguments&... arguments) {
    std::ostringstream line;
    line << name;
    ((line << ' ' << arguments), ...);
    bass.calls.push_back(line.str());
}

HSTREAM createFile(const char* name, BOOL mem, const void* file, QWORD offset, QWORD length, DWORD flags) {
    record(name, mem, static_cast<const char*>(file), offset, length, flags);
    if (!bass.opens) return 0;
    bass.channels[++bass.lastHandle] = {};
    return bass.lastHandle;
}

Channel* find(DWORD handle) {
    const auto found = bass.channels.find(handle);
    return found == bass.channels.end() ? nullptr : &found->second;
}

} // namespace
} // namespace recording

using namespace recording;

BOOL BASS_Init(int device, DWORD freq, DWORD flags, void* window, void* classId) {
    record("Init", device, freq, flags, window, classId);
    return 1;
}

#define RECORD_CREATION(call)                                                                                \
    HSTREAM BASS_##call(BOOL mem, const void* file, QWORD offset, QWORD length, DWORD flags) {               \
        return createFile(#call, mem, file, offset, length, flags);                                          \
    }
RECORD_CREATION(StreamCreateFile)
RECORD_CREATION(FLAC_StreamCreateFile)
RECORD_CREATION(APE_StreamCreateFile)
RECORD_CREATION(OPUS_StreamCreateFile)
RECORD_CREATION(WV_StreamCreateFile)

HSTREAM BASS_StreamCreateURL(const char* url, DWORD offset, DWORD flags, DOWNLOADPROC* proc, void* user) {
    return createFile("StreamCreateURL", proc != nullptr, url, offset, user != nullptr, flags);
}

BOOL BASS_StreamFree(HSTREAM handle) {
    record("StreamFree", handle);
    return bass.channels.erase(handle) > 0;
}

DWORD BASS_ChannelIsActive(DWORD handle) {
    const Channel* channel = find(handle);
    return channel ? channel->state : BASS_ACTIVE_STOPPED;
}

BOOL BASS_ChannelPlay(DWORD handle, BOOL restart) {
    record("Play", handle, restart);
    Channel* channel = find(handle);
    if (channel) channel->state = BASS_ACTIVE_PLAYING;
    return channel != nullptr;
}

BOOL BASS_ChannelPause(DWORD handle) {
    record("Pause", handle);
    Channel* channel = find(handle);
    if (channel) channel->state = BASS_ACTIVE_PAUSED;
    return channel != nullptr;
}

BOOL BASS_ChannelSlideAttribute(DWORD handle, DWORD attrib, float value, DWORD ms) {
    record("Slide", handle, attrib, value, ms);
    if (Channel* channel = find(handle)) channel->sliding = true;
    return 1;
}

BOOL BASS_ChannelIsSliding(DWORD handle, DWORD attrib) {
    const Channel* channel = find(handle);
    return channel && attrib == BASS_ATTRIB_VOL && channel->sliding;
}

BOOL BASS_ChannelSetAttribute(DWORD handle, DWORD attrib, float value) {
    record("SetAttribute", handle, attrib, value);
    if (Channel* channel = find(handle)) channel->sliding = false;
    return 1;
}

BOOL BASS_ChannelGetAttribute(DWORD /*handle*/, DWORD /*attrib*/, float* /*value*/) {
    return 0;
}

HSYNC BASS_ChannelSetSync(DWORD handle, DWORD type, QWORD parameter, SYNCPROC* proc, void* user) {
    record("SetSync", handle, type, parameter, user);
    if (type == (BASS_SYNC_END | BASS_SYNC_ONETIME)) bass.endSync = proc;
    return 1;
}

QWORD BASS_ChannelGetPosition(DWORD handle, DWORD mode) {
    return find(handle) && mode == BASS_POS_BYTE ? 8 : BASS_QWORD_ERROR;
}

BOOL BASS_ChannelSetPosition(DWORD handle, QWORD pos, DWORD mode) {
    record("SetPosition", handle, pos, mode);
    return 1;
}

QWORD BASS_ChannelGetLength(DWORD handle, DWORD mode) {
    return find(handle) && mode == BASS_POS_BYTE ? 80 : BASS_QWORD_ERROR;
}

double BASS_ChannelBytes2Seconds(DWORD handle, QWORD pos) {
    return find(handle) && pos != BASS_QWORD_ERROR ? static_cast<double>(pos) / 8 : -1;
}

QWORD BASS_ChannelSeconds2Bytes(DWORD /*handle*/, double seconds) {
    return static_cast<QWORD>(seconds * 8);
}

DWORD BASS_ChannelGetData(DWORD handle, void* buffer, DWORD request) {
    record("GetData", handle, request);
    if (bass.dataFails) {
        *static_cast<float*>(buffer) = 1; // half written
        static_cast<float*>(buffer)[1] = 1;
        return BASS_DWORD_ERROR;
    }
    std::ranges::copy(bass.magnitudes, static_cast<float*>(buffer));
    return 2048;
}

HENCODE BASS_Encode_Start(DWORD channel, const char* cmdline, DWORD flags, ENCODEPROC* proc, void* user) {
    record("Encode_Start", channel, cmdline, flags, proc != nullptr, user);
    return bass.encoder = bass.encodes ? 7 : 0;
}

DWORD BASS_Encode_ServerInit(HENCODE handle, const char* port, DWORD buffer, DWORD burst, DWORD flags,
                             ENCODECLIENTPROC* proc, void* user) {
    record("Encode_ServerInit", handle, port, buffer, burst, flags, proc != nullptr, user);
    return handle != 0 && bass.serves ? 9090 : 0;
}

BOOL BASS_Encode_SetChannel(HENCODE handle, DWORD channel) {
    record("Encode_SetChannel", handle, channel);
    return 1;
}

BOOL BASS_Encode_Stop(HENCODE handle) {
    record("Encode_Stop", handle);
    bass.encoder = 0;
    return 1;
}

DWORD BASS_Encode_IsActive(HENCODE handle) {
    return handle != 0 && handle == bass.encoder ? BASS_ACTIVE_PLAYING : BASS_ACTIVE_STOPPED;
}
