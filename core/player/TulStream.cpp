#include "core/player/TulStream.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

namespace {

constexpr DWORD fadeOutMs = 300;

bool containsIgnoringCase(std::string_view text, std::string_view lowerCase) {
    const auto lower = [](char letter) { return letter >= 'A' && letter <= 'Z' ? letter + 32 : letter; };
    const auto equal = [&](char letter, char wanted) { return lower(letter) == wanted; };
    return std::search(text.begin(), text.end(), lowerCase.begin(), lowerCase.end(), equal) != text.end();
}

/// A source that contains "http" is an address, and so is one with "http://" or "https://" in any case.
bool isNetworkSource(std::string_view source) {
    return source.find("http") != std::string_view::npos || containsIgnoringCase(source, "http://") ||
           containsIgnoringCase(source, "https://");
}

/// One of the BASS_SOURCE_ values; BASS_SOURCE_NONE for what cannot be opened at all.
DWORD kindOfSource(std::string_view source) {
    if (isNetworkSource(source)) return BASS_SOURCE_URL;
    const auto dot = source.rfind('.');
    if (dot == std::string_view::npos) return BASS_SOURCE_NONE;

    static constexpr std::array<std::pair<std::string_view, DWORD>, 4> decoders{{
        {"flac", BASS_SOURCE_FLAC},
        {"ape", BASS_SOURCE_APE},
        {"opus", BASS_SOURCE_OPUS},
        {"wv", BASS_SOURCE_WV},
    }};
    for (const auto& [extension, kind] : decoders)
        if (source.substr(dot + 1) == extension) return kind;
    return BASS_SOURCE_FILE;
}

HSTREAM createStream(const std::string& source) {
    const char* name = source.c_str();
    switch (kindOfSource(source)) {
    case BASS_SOURCE_URL:
        return BASS_StreamCreateURL(name, 0, 0, nullptr, nullptr);
    case BASS_SOURCE_FLAC:
        return BASS_FLAC_StreamCreateFile(0, name, 0, 0, BASS_ASYNCFILE);
    case BASS_SOURCE_APE:
        return BASS_APE_StreamCreateFile(0, name, 0, 0, BASS_ASYNCFILE);
    case BASS_SOURCE_OPUS:
        return BASS_OPUS_StreamCreateFile(0, name, 0, 0, BASS_ASYNCFILE);
    case BASS_SOURCE_WV:
        return BASS_WV_StreamCreateFile(0, name, 0, 0, BASS_ASYNCFILE);
    case BASS_SOURCE_FILE:
        return BASS_StreamCreateFile(0, name, 0, 0, BASS_ASYNCFILE);
    default:
        return 0;
    }
}

TulFailure::Kind failureKind(DWORD status) {
    using Kind = TulFailure::Kind;
    switch (status) {
    case BASS_STREAM_CONNECTING:
    case BASS_STREAM_OPEN:
        return Kind::none;
    case BASS_STREAM_NOT_FOUND:
        return Kind::notFound;
    case BASS_STREAM_UNREADABLE:
        return Kind::unreadable;
    case BASS_STREAM_NO_AUDIO:
        return Kind::noAudio;
    case BASS_STREAM_NO_NAME:
        return Kind::nameNotFound;
    case BASS_STREAM_REFUSED:
        return Kind::refused;
    case BASS_STREAM_TIMEOUT:
        return Kind::timeout;
    case BASS_STREAM_HTTP_STATUS:
        return Kind::httpStatus;
    case BASS_STREAM_CERTIFICATE:
        return Kind::certificate;
    case BASS_STREAM_LOST:
        return Kind::lost;
    default:
        return Kind::notOpened;
    }
}

std::string tags(HSTREAM handle, DWORD which) {
    std::string text(8192, '\0');
    text.resize(BASS_ChannelGetTags(handle, which, text.data(), static_cast<DWORD>(text.size())));
    return text;
}

float attribute(HSTREAM handle, DWORD which) {
    float value = 0;
    BASS_ChannelGetAttribute(handle, which, &value);
    return value;
}

} // namespace

TulStream::~TulStream() {
    BASS_StreamFree(handle);
}

void TulStream::open(const std::string& newSource) {
    BASS_StreamFree(handle);
    source = newSource;
    handle = createStream(source);
    play();
    infoToggle = 1;
}

void TulStream::holdAtStart() {
    BASS_ChannelPause(handle);
    seek(0.0);
}

void TulStream::setNext(const std::string& next) {
    if (handle == 0 || m_next == next) return;
    m_next = next;
    const DWORD kind = kindOfSource(next);
    if (kind != BASS_SOURCE_NONE && BASS_ChannelSetNext(handle, kind, next.c_str())) return;
    BASS_ChannelSetNext(handle, BASS_SOURCE_NONE, nullptr); // also clears the source named before
}

void TulStream::play() {
    if (m_startsOver) seek(0.0);
    if (!isActive()) BASS_ChannelPlay(handle, 0);
}

void TulStream::fadeOutAndPause() {
    if (active() == BASS_ACTIVE_STALLED) BASS_ChannelPause(handle);
    if (!isActive()) return;
    // Set the sync before the slide, which ends at once while the stream has no data yet.
    BASS_ChannelSetSync(handle, BASS_SYNC_SLIDE, 0, &TulStream::pause, nullptr);
    BASS_ChannelSlideAttribute(handle, BASS_ATTRIB_VOL, 0.0F, fadeOutMs);
}

void TulStream::pauseAtOnce() {
    BASS_ChannelPause(handle);
}

void TulStream::fadeOutAndStop() {
    fadeOutAndPause();
    seek(0.0);
    m_startsOver = true;
}

void TulStream::pause(HSYNC /*sync*/, DWORD channel, DWORD /*data*/, void* /*user*/) {
    BASS_ChannelPause(channel);
}

double TulStream::position() const {
    return BASS_ChannelBytes2Seconds(handle, BASS_ChannelGetPosition(handle, BASS_POS_BYTE));
}

void TulStream::seek(double seconds) {
    m_startsOver = false;
    BASS_ChannelSetPosition(handle, BASS_ChannelSeconds2Bytes(handle, seconds), BASS_POS_BYTE);
}

double TulStream::length() const {
    return BASS_ChannelBytes2Seconds(handle, BASS_ChannelGetLength(handle, BASS_POS_BYTE));
}

void TulStream::setEndSync(SYNCPROC* callback) {
    BASS_ChannelSetSync(handle, BASS_SYNC_END | BASS_SYNC_ONETIME, 0, callback, nullptr);
}

void TulStream::setSinkRemovedSync(SYNCPROC* callback) {
    BASS_ChannelSetSync(handle, BASS_SYNC_SINK_REMOVED, 0, callback, nullptr);
}

bool TulStream::isLive() const {
    return isNetworkSource(source) && BASS_StreamGetStatus(handle, nullptr) == BASS_STREAM_OPEN &&
           length() < 0;
}

TulStreamTitle TulStream::streamTitle() const {
    if (!isNetworkSource(source)) return {};
    return parseStreamTitle(tags(handle, BASS_TAG_ICY), tags(handle, BASS_TAG_META),
                            tags(handle, BASS_TAG_OGG));
}

bool TulStream::isConnecting() const {
    return BASS_StreamGetStatus(handle, nullptr) == BASS_STREAM_CONNECTING;
}

TulFailure TulStream::failure() const {
    TulFailure failure;
    failure.kind = failureKind(BASS_StreamGetStatus(handle, &failure.httpStatus));
    return failure;
}

std::uint32_t TulStream::active() const {
    return BASS_ChannelIsActive(handle);
}

bool TulStream::isPlaying() const {
    return isActive() && !BASS_ChannelIsSliding(handle, BASS_ATTRIB_VOL);
}

float TulStream::volume() const {
    return attribute(handle, BASS_ATTRIB_VOL);
}

void TulStream::setVolume(float volume) {
    BASS_ChannelSetAttribute(handle, BASS_ATTRIB_VOL, volume);
}

float TulStream::balance() const {
    return attribute(handle, BASS_ATTRIB_PAN);
}

void TulStream::setBalance(float balance) {
    BASS_ChannelSetAttribute(handle, BASS_ATTRIB_PAN, balance);
}

std::string TulStream::nextInfoLine() {
    const bool artistsTurn = infoToggle == 1;
    infoToggle = artistsTurn ? 2 : 1;
    const bool showsArtist = artistsTurn ? !artist.empty() || album.empty() : album.empty();
    return showsArtist ? artist : album;
}

TulSpectrum TulStream::spectrum() {
    if (!isActive()) {
        bars.fill(idleSpectrumHeight);
        return bars;
    }
    std::array<float, 512> magnitudes{};
    // The stream may have stopped since: show silence.
    if (BASS_ChannelGetData(handle, magnitudes.data(), BASS_DATA_FFT1024) == BASS_DWORD_ERROR)
        magnitudes.fill(0);
    bars = spectrumBars(magnitudes);
    return bars;
}

bool TulStream::isActive() const {
    return active() == BASS_ACTIVE_PLAYING;
}
