#include "tests/core/RecordingBass.h"

#include "platform/bass/bassenc.h"

#include <algorithm>

namespace recording {

Bass bass;

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

constexpr HENCODE encoderHandle = 7;

/// One of the BASS_SOURCE_ kinds and its source, as one text.
std::string textOf(DWORD kind, const void* source) {
    return std::to_string(kind) + " " + (source ? static_cast<const char*>(source) : "-");
}

HSTREAM create(DWORD kind, const void* source) {
    if (bass.status == BASS_STREAM_NONE) return 0;
    Channel& made = bass.channels[++bass.lastHandle];
    made.status = bass.status;
    made.source = textOf(kind, source);
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

BOOL BASS_SetConfig(DWORD /*option*/, DWORD /*value*/) {
    return 1;
}

BOOL BASS_Init(int /*device*/, DWORD /*freq*/, DWORD /*flags*/, void* /*window*/, void* /*classId*/) {
    return 1;
}

BOOL BASS_Free() {
    return 1;
}

#define CREATION(call, kind)                                                                                 \
    HSTREAM BASS_##call(BOOL /*mem*/, const void* file, QWORD, QWORD, DWORD) {                               \
        return create(kind, file);                                                                           \
    }
CREATION(StreamCreateFile, BASS_SOURCE_FILE)
CREATION(FLAC_StreamCreateFile, BASS_SOURCE_FLAC)
CREATION(APE_StreamCreateFile, BASS_SOURCE_APE)
CREATION(OPUS_StreamCreateFile, BASS_SOURCE_OPUS)
CREATION(WV_StreamCreateFile, BASS_SOURCE_WV)

HSTREAM BASS_StreamCreateURL(const char* url, DWORD, DWORD, DOWNLOADPROC* /*proc*/, void* /*user*/) {
    return create(BASS_SOURCE_URL, url);
}

BOOL BASS_StreamFree(HSTREAM handle) {
    return bass.channels.erase(handle) > 0;
}

DWORD BASS_StreamGetStatus(HSTREAM handle, DWORD* httpStatus) {
    const Channel* channel = find(handle);
    if (channel && httpStatus) *httpStatus = channel->httpStatus;
    return channel ? channel->status : BASS_STREAM_NONE;
}

BOOL BASS_ChannelSetNext(DWORD handle, DWORD kind, const char* source) {
    Channel* channel = findWorking(handle);
    if (!channel) return 0;
    channel->next = textOf(kind, source);
    ++channel->nextChanges;
    return 1;
}

DWORD BASS_ChannelIsActive(DWORD handle) {
    const Channel* channel = findWorking(handle);
    return channel ? channel->state : BASS_ACTIVE_STOPPED;
}

BOOL BASS_ChannelPlay(DWORD handle, BOOL /*restart*/) {
    Channel* channel = findWorking(handle);
    if (channel)
        channel->state = channel->status == BASS_STREAM_OPEN ? BASS_ACTIVE_PLAYING : BASS_ACTIVE_STALLED;
    return channel != nullptr;
}

BOOL BASS_ChannelPause(DWORD handle) {
    Channel* channel = findWorking(handle);
    if (!channel || channel->state == BASS_ACTIVE_STOPPED) return 0;
    channel->state = BASS_ACTIVE_PAUSED;
    return 1;
}

BOOL BASS_ChannelSlideAttribute(DWORD handle, DWORD /*attrib*/, float value, DWORD /*ms*/) {
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
    Channel* channel = findWorking(handle);
    if (!channel) return 0;
    if (attrib == BASS_ATTRIB_VOL) channel->sliding = false;
    (attrib == BASS_ATTRIB_VOL ? channel->volume : channel->balance) = value;
    return 1;
}

BOOL BASS_ChannelGetAttribute(DWORD /*handle*/, DWORD /*attrib*/, float* /*value*/) {
    return 0;
}

HSYNC BASS_ChannelSetSync(DWORD handle, DWORD type, QWORD /*parameter*/, SYNCPROC* proc, void* /*user*/) {
    Channel* channel = findWorking(handle);
    if (!channel) return 0;
    if (type == BASS_SYNC_SINK_REMOVED) return 1;
    (type == BASS_SYNC_SLIDE ? channel->slideSync : channel->endSync) = proc;
    return 1;
}

QWORD BASS_ChannelGetPosition(DWORD handle, DWORD mode) {
    const Channel* channel = findWorking(handle);
    return channel && mode == BASS_POS_BYTE ? channel->position : BASS_QWORD_ERROR;
}

BOOL BASS_ChannelSetPosition(DWORD handle, QWORD pos, DWORD /*mode*/) {
    Channel* channel = findWorking(handle);
    if (channel) channel->position = pos;
    return channel != nullptr;
}

QWORD BASS_ChannelGetLength(DWORD handle, DWORD mode) {
    const Channel* channel = findWorking(handle);
    return channel && !channel->isLive && mode == BASS_POS_BYTE ? 80 : BASS_QWORD_ERROR;
}

double BASS_ChannelBytes2Seconds(DWORD handle, QWORD pos) {
    return findWorking(handle) && pos != BASS_QWORD_ERROR ? static_cast<double>(pos) / 8 : -1;
}

QWORD BASS_ChannelSeconds2Bytes(DWORD /*handle*/, double seconds) {
    return static_cast<QWORD>(seconds * 8);
}

DWORD BASS_ChannelGetTags(DWORD handle, DWORD tags, char* text, DWORD size) {
    Channel* channel = findWorking(handle);
    return channel ? static_cast<DWORD>(channel->tags[tags].copy(text, size)) : 0;
}

DWORD BASS_ChannelGetData(DWORD /*handle*/, void* buffer, DWORD /*request*/) {
    if (bass.dataFails) {
        *static_cast<float*>(buffer) = 1; // half written
        static_cast<float*>(buffer)[1] = 1;
        return BASS_DWORD_ERROR;
    }
    std::ranges::copy(bass.magnitudes, static_cast<float*>(buffer));
    return 2048;
}

HENCODE BASS_Encode_Start(DWORD channel, const char* commandLine, DWORD, ENCODEPROC* /*proc*/,
                          void* /*user*/) {
    const std::string command(commandLine);
    bass.encodersTried.push_back(command.substr(0, command.find(" -")));
    if (!bass.hasEncoder) return 0;
    bass.encoder = {.runs = true, .channel = channel, .starts = bass.encoder.starts + 1};
    return encoderHandle;
}

DWORD BASS_Encode_ServerInit(HENCODE handle, const char* port, DWORD, DWORD, DWORD,
                             ENCODECLIENTPROC* /*proc*/, void* /*user*/) {
    return handle != 0 && bass.portIsFree ? static_cast<DWORD>(std::stoul(port)) : 0;
}

BOOL BASS_Encode_ServerSetName(HENCODE /*handle*/, const char* name) {
    bass.encoder.name = name;
    return 1;
}

DWORD BASS_Encode_ServerGetCount(HENCODE handle) {
    return handle != 0 && bass.encoder.runs ? 3 : 0;
}

BOOL BASS_Encode_SetChannel(HENCODE /*handle*/, DWORD channel) {
    bass.encoder.channel = channel;
    return 1;
}

BOOL BASS_Encode_Stop(HENCODE /*handle*/) {
    bass.encoder.runs = false;
    return 1;
}

DWORD BASS_Encode_IsActive(HENCODE handle) {
    return handle != 0 && bass.encoder.runs ? BASS_ACTIVE_PLAYING : BASS_ACTIVE_STOPPED;
}
