#include "platform/bass/bass.h"

#include "platform/bass/Fft.h"
#include "platform/bass/Library.h"
#include "platform/bass/Taps.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <cstring>

namespace {

using bass::Library;

constexpr QWORD bytesPerFrame = sizeof(bass::Frame);
constexpr std::chrono::milliseconds closingLimit{200};

/// Holds the engine's lock and the stream of a handle; false when there is no such stream.
class Access {
public:
    explicit Access(DWORD handle) : m_channel(Library::instance().find(lock, handle)) {}
    explicit operator bool() const { return m_channel != nullptr; }
    bass::Channel* operator->() const { return m_channel.get(); }

    Library::Lock lock = Library::instance().lock();

private:
    std::shared_ptr<bass::Channel> m_channel;
};

HSTREAM openFile(BOOL mem, const void* file, QWORD offset, QWORD length, DWORD kind) {
    if (mem || !file || offset != 0 || length != 0) return 0;
    return Library::instance().create({kind, static_cast<const char*>(file)});
}

bool isAttribute(DWORD attribute) {
    return attribute == BASS_ATTRIB_VOL || attribute == BASS_ATTRIB_PAN;
}

const std::string* saidAs(DWORD kind, const bass::StreamTags& tags) {
    switch (kind) {
    case BASS_TAG_OGG:
        return &tags.comments;
    case BASS_TAG_ICY:
        return &tags.headers;
    case BASS_TAG_META:
        return &tags.metadata;
    default:
        return nullptr;
    }
}

std::uint32_t framesOf(DWORD ms) {
    return static_cast<std::uint32_t>(std::min<QWORD>(QWORD{ms} * bass::sampleRate / 1000, ~DWORD{0}));
}

} // namespace

BOOL BASS_Init(int device, DWORD freq, DWORD flags, void* window, void* classId) {
    if (device != -1 || freq != bass::sampleRate || flags != 0 || window || classId) return 0;
    return Library::instance().open();
}

BOOL BASS_SetConfig(DWORD option, DWORD value) {
    if (option != BASS_CONFIG_REPLAYGAIN || value > BASS_REPLAYGAIN_ALBUM) return 0;
    Library::instance().setLoudness(static_cast<bass::ReplayGainMode>(value));
    return 1;
}

BOOL BASS_Free() {
    return Library::instance().close(closingLimit);
}

HSTREAM BASS_StreamCreateFile(BOOL mem, const void* file, QWORD offset, QWORD length, DWORD /*flags*/) {
    return openFile(mem, file, offset, length, BASS_SOURCE_FILE);
}

HSTREAM BASS_FLAC_StreamCreateFile(BOOL mem, const void* file, QWORD offset, QWORD length, DWORD /*flags*/) {
    return openFile(mem, file, offset, length, BASS_SOURCE_FLAC);
}

HSTREAM BASS_APE_StreamCreateFile(BOOL mem, const void* file, QWORD offset, QWORD length, DWORD /*flags*/) {
    return openFile(mem, file, offset, length, BASS_SOURCE_APE);
}

HSTREAM BASS_OPUS_StreamCreateFile(BOOL mem, const void* file, QWORD offset, QWORD length, DWORD /*flags*/) {
    return openFile(mem, file, offset, length, BASS_SOURCE_OPUS);
}

HSTREAM BASS_WV_StreamCreateFile(BOOL mem, const void* file, QWORD offset, QWORD length, DWORD /*flags*/) {
    return openFile(mem, file, offset, length, BASS_SOURCE_WV);
}

HSTREAM BASS_StreamCreateURL(const char* url, DWORD offset, DWORD flags, DOWNLOADPROC* proc, void* /*user*/) {
    if (!url || offset != 0 || flags != 0 || proc || !bass::isHttpAddress(url)) return 0;
    return Library::instance().create({BASS_SOURCE_URL, url});
}

BOOL BASS_StreamFree(HSTREAM handle) {
    return Library::instance().free(handle);
}

DWORD BASS_StreamGetStatus(HSTREAM handle, DWORD* httpStatus) {
    const auto lock = Library::instance().lock();
    const auto channel = Library::instance().findAny(lock, handle);
    return channel ? channel->status(lock, httpStatus) : BASS_STREAM_NONE;
}

BOOL BASS_ChannelSetNext(DWORD handle, DWORD kind, const char* source) {
    if (kind > BASS_SOURCE_URL || (kind == BASS_SOURCE_NONE) != (source == nullptr)) return 0;
    if (kind == BASS_SOURCE_URL && !bass::isHttpAddress(source)) return 0;
    return Library::instance().setNext(handle, {kind, source ? source : ""});
}

DWORD BASS_ChannelIsActive(DWORD handle) {
    const Access channel(handle);
    return channel ? channel->active(channel.lock) : BASS_ACTIVE_STOPPED;
}

BOOL BASS_ChannelPlay(DWORD handle, BOOL restart) {
    const Access channel(handle);
    return channel && channel->play(channel.lock, restart != 0);
}

BOOL BASS_ChannelPause(DWORD handle) {
    const Access channel(handle);
    return channel && channel->pause(channel.lock);
}

BOOL BASS_ChannelSlideAttribute(DWORD handle, DWORD attrib, float value, DWORD ms) {
    const Access channel(handle);
    if (!channel || !isAttribute(attrib) || !std::isfinite(value)) return 0;
    channel->slideAttribute(channel.lock, attrib, value, framesOf(ms));
    return 1;
}

BOOL BASS_ChannelIsSliding(DWORD handle, DWORD attrib) {
    const Access channel(handle);
    return channel && isAttribute(attrib) && channel->attribute(channel.lock, attrib).isSliding();
}

BOOL BASS_ChannelSetAttribute(DWORD handle, DWORD attrib, float value) {
    const Access channel(handle);
    if (!channel || !isAttribute(attrib) || !std::isfinite(value)) return 0;
    channel->setAttribute(channel.lock, attrib, value);
    return 1;
}

BOOL BASS_ChannelGetAttribute(DWORD handle, DWORD attrib, float* value) {
    const Access channel(handle);
    if (!channel || !isAttribute(attrib) || !value) return 0;
    *value = channel->attribute(channel.lock, attrib).get();
    return 1;
}

HSYNC BASS_ChannelSetSync(DWORD handle, DWORD type, QWORD parameter, SYNCPROC* proc, void* user) {
    const auto lock = Library::instance().lock();
    const auto channel = Library::instance().findAny(lock, handle); // a failed stream still reports its end
    const DWORD kind = type & ~BASS_SYNC_ONETIME;
    const bool isKnown = kind == BASS_SYNC_END || kind == BASS_SYNC_SLIDE || kind == BASS_SYNC_SINK_REMOVED;
    if (!channel || !proc || parameter != 0 || !isKnown) return 0;
    const HSYNC sync = Library::instance().newSyncHandle(lock);
    channel->addSync(lock, {sync, kind, (type & BASS_SYNC_ONETIME) != 0, proc, user});
    return sync;
}

QWORD BASS_ChannelGetPosition(DWORD handle, DWORD mode) {
    const Access channel(handle);
    if (!channel || mode != BASS_POS_BYTE) return BASS_QWORD_ERROR;
    return static_cast<QWORD>(channel->position(channel.lock)) * bytesPerFrame;
}

BOOL BASS_ChannelSetPosition(DWORD handle, QWORD pos, DWORD mode) {
    const Access channel(handle);
    if (!channel || mode != BASS_POS_BYTE) return 0;
    return channel->seek(channel.lock, static_cast<std::int64_t>(pos / bytesPerFrame));
}

QWORD BASS_ChannelGetLength(DWORD handle, DWORD mode) {
    const Access channel(handle);
    if (!channel || mode != BASS_POS_BYTE) return BASS_QWORD_ERROR;
    const auto frames = channel->length(channel.lock);
    return frames ? static_cast<QWORD>(*frames) * bytesPerFrame : BASS_QWORD_ERROR;
}

double BASS_ChannelBytes2Seconds(DWORD handle, QWORD pos) {
    if (!Access(handle) || pos == BASS_QWORD_ERROR) return -1.0;
    const QWORD frames = pos / bytesPerFrame;
    return static_cast<double>(frames) / bass::sampleRate;
}

QWORD BASS_ChannelSeconds2Bytes(DWORD handle, double seconds) {
    if (!Access(handle) || std::isnan(seconds)) return BASS_QWORD_ERROR;
    // Added so that rounding does not turn a frame's exact time into the frame before.
    constexpr double tolerance = 1e-6;
    constexpr double maxFrames = 1e15;
    const double frames = std::clamp(seconds * bass::sampleRate + tolerance, 0.0, maxFrames);
    return static_cast<QWORD>(frames) * bytesPerFrame;
}

DWORD BASS_ChannelGetTags(DWORD handle, DWORD tags, char* text, DWORD size) {
    const Access channel(handle);
    if (!channel || !text) return 0;
    const std::string* const said = saidAs(tags, channel->tags(channel.lock));
    return said ? static_cast<DWORD>(said->copy(text, size)) : 0;
}

DWORD BASS_ChannelGetData(DWORD handle, void* buffer, DWORD request) {
    std::array<bass::Frame, bass::fftFrames> frames;
    {
        const Access channel(handle);
        if (!channel || !buffer || request != BASS_DATA_FFT1024) return BASS_DWORD_ERROR;
        channel->lastPlayed(channel.lock, frames);
    }
    const auto magnitudes = bass::magnitudes(frames);
    std::memcpy(buffer, magnitudes.data(), sizeof(magnitudes));
    return sizeof(magnitudes);
}

bool bass::setTap(DWORD handle, SampleTap& tap) {
    return Library::instance().setTap(handle, tap);
}

bool bass::hasTap(DWORD handle, const SampleTap& tap) {
    const Access channel(handle);
    return channel && channel->tap(channel.lock) == &tap;
}

void bass::removeTap(const SampleTap& tap) {
    Library::instance().removeTap(tap);
}
