#include "platform/bass/bass.h"

#include "platform/bass/Fft.h"
#include "platform/bass/Library.h"
#include "platform/bass/Taps.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <map>
#include <strings.h>

namespace {

using bass::Library;

constexpr QWORD bytesPerFrame = bass::channelCount * sizeof(float);

std::shared_ptr<bass::Channel> find(DWORD handle) {
    return Library::instance().find(handle);
}

/// Provisional: streams that could not be opened, with their status.
std::map<DWORD, DWORD> failedStreams;
HSTREAM orFailed(HSTREAM handle, DWORD status) {
    if (handle != 0) return handle;
    const DWORD failed = 0x70000000 + static_cast<DWORD>(failedStreams.size());
    failedStreams[failed] = status;
    return failed;
}

HSTREAM openFile(BOOL mem, const void* file, QWORD offset, QWORD length, bass::Format format) {
    if (mem || !file || offset != 0 || length != 0) return 0;
    const char* path = static_cast<const char*>(file);
    return orFailed(Library::instance().add(bass::openFile(path, format)),
                    std::filesystem::exists(path) ? BASS_STREAM_NO_AUDIO : BASS_STREAM_NOT_FOUND);
}

bool isAttribute(DWORD attribute) {
    return attribute == BASS_ATTRIB_VOL || attribute == BASS_ATTRIB_PAN;
}

std::uint32_t framesOf(DWORD ms) {
    return static_cast<std::uint32_t>(std::min<QWORD>(QWORD{ms} * bass::sampleRate / 1000, ~DWORD{0}));
}

} // namespace

BOOL BASS_Init(int device, DWORD freq, DWORD flags, void* window, void* classId) {
    if (device != -1 || freq != bass::sampleRate || flags != 0 || window || classId) return 0;
    return Library::instance().open();
}

HSTREAM BASS_StreamCreateFile(BOOL mem, const void* file, QWORD offset, QWORD length, DWORD /*flags*/) {
    return openFile(mem, file, offset, length, bass::Format::any);
}

HSTREAM BASS_FLAC_StreamCreateFile(BOOL mem, const void* file, QWORD offset, QWORD length, DWORD /*flags*/) {
    return openFile(mem, file, offset, length, bass::Format::flac);
}

HSTREAM BASS_APE_StreamCreateFile(BOOL mem, const void* file, QWORD offset, QWORD length, DWORD /*flags*/) {
    return openFile(mem, file, offset, length, bass::Format::ape);
}

HSTREAM BASS_OPUS_StreamCreateFile(BOOL mem, const void* file, QWORD offset, QWORD length, DWORD /*flags*/) {
    return openFile(mem, file, offset, length, bass::Format::opus);
}

HSTREAM BASS_WV_StreamCreateFile(BOOL mem, const void* file, QWORD offset, QWORD length, DWORD /*flags*/) {
    return openFile(mem, file, offset, length, bass::Format::wavpack);
}

HSTREAM BASS_StreamCreateURL(const char* url, DWORD offset, DWORD flags, DOWNLOADPROC* proc, void* /*user*/) {
    if (!url || offset != 0 || flags != 0 || proc) return 0;
    if (strncasecmp(url, "http", 4) != 0) return 0;
    return orFailed(Library::instance().add(bass::openUrl(url)), BASS_STREAM_REFUSED);
}

DWORD BASS_StreamGetStatus(HSTREAM handle, DWORD* /*httpStatus*/) {
    if (find(handle)) return BASS_STREAM_OPEN;
    const auto failed = failedStreams.find(handle);
    return failed == failedStreams.end() ? BASS_STREAM_NONE : failed->second;
}

BOOL BASS_ChannelSetNext(DWORD /*handle*/, DWORD /*kind*/, const char* /*source*/) {
    return 1;
}

BOOL BASS_StreamFree(HSTREAM handle) {
    return Library::instance().free(handle);
}

DWORD BASS_ChannelIsActive(DWORD handle) {
    const auto channel = find(handle);
    return channel ? channel->active() : BASS_ACTIVE_STOPPED;
}

BOOL BASS_ChannelPlay(DWORD handle, BOOL restart) {
    const auto channel = find(handle);
    return channel && channel->play(restart != 0);
}

BOOL BASS_ChannelPause(DWORD handle) {
    const auto channel = find(handle);
    return channel && channel->pause();
}

BOOL BASS_ChannelSlideAttribute(DWORD handle, DWORD attrib, float value, DWORD ms) {
    const auto channel = find(handle);
    if (!channel || !isAttribute(attrib) || !std::isfinite(value)) return 0;
    channel->slideAttribute(attrib, value, framesOf(ms));
    return 1;
}

BOOL BASS_ChannelIsSliding(DWORD handle, DWORD attrib) {
    const auto channel = find(handle);
    return channel && isAttribute(attrib) && channel->isSliding(attrib);
}

BOOL BASS_ChannelSetAttribute(DWORD handle, DWORD attrib, float value) {
    const auto channel = find(handle);
    if (!channel || !isAttribute(attrib) || !std::isfinite(value)) return 0;
    channel->setAttribute(attrib, value);
    return 1;
}

BOOL BASS_ChannelGetAttribute(DWORD handle, DWORD attrib, float* value) {
    const auto channel = find(handle);
    if (!channel || !isAttribute(attrib) || !value) return 0;
    *value = channel->attribute(attrib);
    return 1;
}

HSYNC BASS_ChannelSetSync(DWORD handle, DWORD type, QWORD parameter, SYNCPROC* proc, void* user) {
    const auto channel = find(handle);
    const DWORD kind = type & ~BASS_SYNC_ONETIME;
    if (!channel || !proc || parameter != 0 || (kind != BASS_SYNC_END && kind != BASS_SYNC_SLIDE)) return 0;
    const HSYNC sync = Library::instance().newSyncHandle();
    channel->addSync({sync, kind, (type & BASS_SYNC_ONETIME) != 0, proc, user});
    return sync;
}

QWORD BASS_ChannelGetPosition(DWORD handle, DWORD mode) {
    const auto channel = find(handle);
    if (!channel || mode != BASS_POS_BYTE) return BASS_QWORD_ERROR;
    return static_cast<QWORD>(channel->position()) * bytesPerFrame;
}

BOOL BASS_ChannelSetPosition(DWORD handle, QWORD pos, DWORD mode) {
    const auto channel = find(handle);
    if (!channel || mode != BASS_POS_BYTE) return 0;
    return channel->seek(static_cast<std::int64_t>(pos / bytesPerFrame));
}

QWORD BASS_ChannelGetLength(DWORD handle, DWORD mode) {
    const auto channel = find(handle);
    if (!channel || mode != BASS_POS_BYTE) return BASS_QWORD_ERROR;
    const auto frames = channel->length();
    return frames ? static_cast<QWORD>(*frames) * bytesPerFrame : BASS_QWORD_ERROR;
}

double BASS_ChannelBytes2Seconds(DWORD handle, QWORD pos) {
    if (!find(handle) || pos == BASS_QWORD_ERROR) return -1.0;
    const QWORD frames = pos / bytesPerFrame;
    return static_cast<double>(frames) / bass::sampleRate;
}

QWORD BASS_ChannelSeconds2Bytes(DWORD handle, double seconds) {
    if (!find(handle) || std::isnan(seconds)) return BASS_QWORD_ERROR;
    // A hair above, so that a frame's own time gives this frame and not the one before.
    constexpr double tolerance = 1e-6;
    constexpr double mostFrames = 1e15;
    const double frames = std::clamp(seconds * bass::sampleRate + tolerance, 0.0, mostFrames);
    return static_cast<QWORD>(frames) * bytesPerFrame;
}

DWORD BASS_ChannelGetData(DWORD handle, void* buffer, DWORD request) {
    const auto channel = find(handle);
    if (!channel || !buffer || request != BASS_DATA_FFT1024) return BASS_DWORD_ERROR;
    std::array<float, bass::fftFrames * bass::channelCount> frames;
    channel->lastHeard(frames);
    const auto magnitudes = bass::magnitudes(frames);
    std::memcpy(buffer, magnitudes.data(), sizeof(magnitudes));
    return sizeof(magnitudes);
}

bool bass::setTap(DWORD handle, SampleTap* tap) {
    const auto channel = find(handle);
    return channel && channel->setTap(tap);
}
