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

void Bass::endFade() {
    last().sliding = false;
    if (last().slideSync) last().slideSync(1, lastHandle, 0, nullptr);
}

void Bass::fail(DWORD failure, DWORD httpStatus) {
    last().state = BASS_ACTIVE_STOPPED;
    last().status = failure;
    last().httpStatus = httpStatus;
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
    if (bass.status == BASS_STREAM_NONE) return 0;
    bass.channels[++bass.lastHandle].status = bass.status;
    return bass.lastHandle;
}

Channel* find(DWORD handle) {
    const auto found = bass.channels.find(handle);
    return found == bass.channels.end() ? nullptr : &found->second;
}

/// A channel that takes commands: a failed one answers like none.
Channel* findWorking(DWORD handle) {
    Channel* channel = find(handle);
    return channel && channel->status < BASS_STREAM_NOT_FOUND ? channel : nullptr;
}

} // namespace
} // namespace recording

using namespace recording;

BOOL BASS_Init(int device, DWORD freq, DWORD flags, void* window, void* classId) {
    record("Init", device, freq, flags, window, classId);
    return 1;
}

BOOL BASS_Free() {
    record("Free");
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

DWORD BASS_StreamGetStatus(HSTREAM handle, DWORD* httpStatus) {
    const Channel* channel = find(handle);
    if (channel && httpStatus) *httpStatus = channel->httpStatus;
    return channel ? channel->status : BASS_STREAM_NONE;
}

BOOL BASS_ChannelSetNext(DWORD handle, DWORD kind, const char* source) {
    record("SetNext", handle, kind, source ? source : "-");
    Channel* channel = findWorking(handle);
    if (channel) channel->next = std::to_string(kind) + " " + (source ? source : "-");
    return channel != nullptr;
}

DWORD BASS_ChannelIsActive(DWORD handle) {
    const Channel* channel = findWorking(handle);
    return channel ? channel->state : BASS_ACTIVE_STOPPED;
}

BOOL BASS_ChannelPlay(DWORD handle, BOOL restart) {
    record("Play", handle, restart);
    Channel* channel = findWorking(handle);
    if (channel)
        channel->state = channel->status == BASS_STREAM_OPEN ? BASS_ACTIVE_PLAYING : BASS_ACTIVE_STALLED;
    return channel != nullptr;
}

BOOL BASS_ChannelPause(DWORD handle) {
    record("Pause", handle);
    Channel* channel = findWorking(handle);
    if (!channel || channel->state == BASS_ACTIVE_STOPPED) return 0;
    channel->state = BASS_ACTIVE_PAUSED;
    return 1;
}

BOOL BASS_ChannelSlideAttribute(DWORD handle, DWORD attrib, float value, DWORD ms) {
    record("Slide", handle, attrib, value, ms);
    Channel* channel = findWorking(handle);
    if (!channel) return 0;
    channel->sliding = true;
    channel->volume = value;
    return 1;
}

BOOL BASS_ChannelIsSliding(DWORD handle, DWORD attrib) {
    const Channel* channel = find(handle);
    return channel && attrib == BASS_ATTRIB_VOL && channel->sliding;
}

BOOL BASS_ChannelSetAttribute(DWORD handle, DWORD attrib, float value) {
    record("SetAttribute", handle, attrib, value);
    Channel* channel = findWorking(handle);
    if (!channel || attrib != BASS_ATTRIB_VOL) return channel != nullptr;
    channel->sliding = false;
    channel->volume = value;
    return 1;
}

BOOL BASS_ChannelGetAttribute(DWORD /*handle*/, DWORD /*attrib*/, float* /*value*/) {
    return 0;
}

HSYNC BASS_ChannelSetSync(DWORD handle, DWORD type, QWORD parameter, SYNCPROC* proc, void* user) {
    record("SetSync", handle, type, parameter, user);
    Channel* channel = findWorking(handle);
    if (!channel) return 0;
    (type == BASS_SYNC_SLIDE ? channel->slideSync : channel->endSync) = proc;
    return 1;
}

QWORD BASS_ChannelGetPosition(DWORD handle, DWORD mode) {
    const Channel* channel = findWorking(handle);
    return channel && mode == BASS_POS_BYTE ? channel->position : BASS_QWORD_ERROR;
}

BOOL BASS_ChannelSetPosition(DWORD handle, QWORD pos, DWORD mode) {
    record("SetPosition", handle, pos, mode);
    Channel* channel = findWorking(handle);
    if (channel) channel->position = pos;
    return channel != nullptr;
}

QWORD BASS_ChannelGetLength(DWORD handle, DWORD mode) {
    return findWorking(handle) && mode == BASS_POS_BYTE ? 80 : BASS_QWORD_ERROR;
}

double BASS_ChannelBytes2Seconds(DWORD handle, QWORD pos) {
    return findWorking(handle) && pos != BASS_QWORD_ERROR ? static_cast<double>(pos) / 8 : -1;
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
