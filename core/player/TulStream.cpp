#include "core/player/TulStream.h"

namespace {

constexpr DWORD fadeOutMs = 300;

HSTREAM createStream(const std::string& source) {
    if (source.find("http") != std::string::npos)
        return BASS_StreamCreateURL(source.c_str(), 0, 0, nullptr, nullptr);
    const auto dot = source.rfind('.');
    if (dot == std::string::npos) return 0;

    const std::string extension = source.substr(dot + 1);
    auto* create = &BASS_StreamCreateFile;
    if (extension == "flac") create = &BASS_FLAC_StreamCreateFile;
    if (extension == "ape") create = &BASS_APE_StreamCreateFile;
    if (extension == "opus") create = &BASS_OPUS_StreamCreateFile;
    if (extension == "wv") create = &BASS_WV_StreamCreateFile;
    return create(0, source.c_str(), 0, 0, BASS_ASYNCFILE);
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

void TulStream::open(const std::string& source) {
    BASS_StreamFree(handle);
    handle = createStream(source);
    play();
    infoToggle = 1;
}

void TulStream::play() {
    if (!isActive()) BASS_ChannelPlay(handle, 0);
}

void TulStream::fadeOutAndPause() {
    if (!isActive()) return;
    BASS_ChannelSlideAttribute(handle, BASS_ATTRIB_VOL, 0.0F, fadeOutMs);
    BASS_ChannelSetSync(handle, BASS_SYNC_SLIDE, 0, &TulStream::pause, nullptr);
}

void TulStream::pause(HSYNC /*sync*/, DWORD channel, DWORD /*data*/, void* /*user*/) {
    BASS_ChannelPause(channel);
}

double TulStream::position() const {
    return BASS_ChannelBytes2Seconds(handle, BASS_ChannelGetPosition(handle, BASS_POS_BYTE));
}

void TulStream::seek(double seconds) {
    BASS_ChannelSetPosition(handle, BASS_ChannelSeconds2Bytes(handle, seconds), BASS_POS_BYTE);
}

double TulStream::length() const {
    return BASS_ChannelBytes2Seconds(handle, BASS_ChannelGetLength(handle, BASS_POS_BYTE));
}

void TulStream::setEndSync(SYNCPROC* callback) {
    BASS_ChannelSetSync(handle, BASS_SYNC_END | BASS_SYNC_ONETIME, 0, callback, nullptr);
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
    return artistsTurn ? artist : album;
}

TulSpectrum TulStream::spectrum() {
    if (!isActive()) {
        bars.fill(idleSpectrumHeight);
        return bars;
    }
    std::array<float, 512> magnitudes{};
    // It may have stopped since: that is silence.
    if (BASS_ChannelGetData(handle, magnitudes.data(), BASS_DATA_FFT1024) == BASS_DWORD_ERROR)
        magnitudes.fill(0);
    bars = spectrumBars(magnitudes);
    return bars;
}

bool TulStream::isActive() const {
    return BASS_ChannelIsActive(handle) == BASS_ACTIVE_PLAYING;
}
