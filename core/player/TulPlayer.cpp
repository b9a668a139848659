#include "core/player/TulPlayer.h"

#include "core/player/TulNetworkSharing.h"

#include <mutex>
#include <utility>

namespace {

/// Guards TulPlayer::instance and its executor between the main thread, which changes them, and the sync
/// thread. Held for moments only, never while anything else is called.
std::mutex handOverMutex;

constexpr DWORD outputRate = 44100;

} // namespace

TulPlayer* TulPlayer::instance = nullptr;

TulPlayer::TulPlayer()
    : playlistFileFactory(std::make_unique<TulPlaylistFileFactory>()),
      playlist(std::make_unique<TulPlaylist>()),
      internalPlaylistManager(std::make_unique<TulInternalPlaylistManager>()),
      networkSharing(std::make_unique<TulNetworkSharing>()) {
    {
        const std::lock_guard lock(handOverMutex);
        instance = this;
    }
    BASS_Init(-1, outputRate, 0, nullptr, nullptr);
}

TulPlayer::~TulPlayer() {
    {
        const std::lock_guard lock(handOverMutex);
        if (instance == this) instance = nullptr;
    }
    if (networkSharing->isActive()) networkSharing->stop();
}

void TulPlayer::setExecutor(Executor executor) {
    const std::lock_guard lock(handOverMutex);
    m_executor = std::move(executor);
}

void TulPlayer::setStorePath(const std::string& path) {
    internalPlaylistManager->storePath = path;
}

void TulPlayer::startCurrentEntry() {
    stream.reset();
    if (playlist->entryCount() == 0) return;

    TulPlaylistEntry& entry = *playlist->currentEntry();
    stream = std::make_unique<TulStream>();
    stream->title = entry.title;
    stream->artist = entry.artist;
    stream->album = entry.album;
    stream->open(entry.source);
    stream->setEndSync(&TulPlayer::onStreamEnded);
    stream->setVolume(volume);
    stream->setBalance(balance);
    if (networkSharingEnabled) networkSharing->start(*stream);
    if (!entry.active) playlist->selectEntry(playlist->currentIndex);
    entry.loadCoverArt();
    songChanged = true;
}

void TulPlayer::play() {
    if (!stream) return startCurrentEntry();
    stream->setVolume(volume); // a pause has left it at 0
    stream->play();
}

void TulPlayer::pause() {
    if (stream) stream->fadeOutAndPause();
}

bool TulPlayer::isPlaying() const {
    return stream && stream->isPlaying();
}

void TulPlayer::next() {
    playlist->nextEntry() ? startCurrentEntry() : restartCurrent();
}

void TulPlayer::previous() {
    playlist->previousEntry() ? startCurrentEntry() : restartCurrent();
}

void TulPlayer::stop() {
    if (!stream) return;
    stream->fadeOutAndPause();
    stream->seek(0.0);
}

void TulPlayer::restartCurrent() {
    if (!stream) return;
    stream->seek(0.0);
    stream->play();
}

void TulPlayer::onStreamEnded(HSYNC /*sync*/, DWORD channel, DWORD /*data*/, void* /*user*/) {
    Executor executor;
    {
        const std::lock_guard lock(handOverMutex);
        if (!instance) return;
        executor = instance->m_executor;
    }
    const auto task = [channel] {
        if (instance) instance->streamEnded(channel);
    };
    executor ? executor(task) : task();
}

/// Only the end of the stream that is there now counts: a command may have replaced it meanwhile.
void TulPlayer::streamEnded(HSTREAM ended) {
    if (!stream || stream->handle != ended) return;
    playlist->entryCount() == 0 ? stop() : next();
}

void TulPlayer::setVolume(float newVolume) {
    if (stream) stream->setVolume(newVolume);
    volume = newVolume;
}

void TulPlayer::setBalance(float newBalance) {
    if (stream) stream->setBalance(newBalance);
    balance = newBalance;
}

void TulPlayer::setPlaylist(std::unique_ptr<TulPlaylist> newPlaylist) {
    playlist = std::move(newPlaylist);
    if (playlist->entryCount() > 0) startCurrentEntry();
}

bool TulPlayer::openPlaylist(const std::string& path) {
    auto opened = playlistFileFactory->createPlaylistFile(path)->read(path, readingProgress);
    if (!opened) return false;
    setPlaylist(std::move(opened));
    rememberPlaylist(path);
    return true;
}

void TulPlayer::savePlaylist(const std::string& path) {
    playlistFileFactory->createPlaylistFile(path)->write(*playlist, path);
    rememberPlaylist(path);
}

void TulPlayer::rememberPlaylist(const std::string& path) {
    internalPlaylistManager->addPlaylist(playlist->name, path);
    internalPlaylistManager->save();
}

void TulPlayer::clearPlaylist() {
    playlist = std::make_unique<TulPlaylist>();
}

void TulPlayer::selectInternalPlaylist(std::int32_t index) {
    if (index == internalPlaylistManager->currentIndex) return;
    if (index < 0 || index >= internalPlaylistManager->count()) return;
    const std::string path = internalPlaylistManager->playlistAt(index).first;
    if (openPlaylist(path)) internalPlaylistManager->currentIndex = index;
}

bool TulPlayer::takeSongChanged() {
    return std::exchange(songChanged, false);
}
