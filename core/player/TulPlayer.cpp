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
      networkSharing(std::make_unique<TulNetworkSharing>()),
      tagReader(workers, [this](const auto& entry, auto row) { entryChanged(entry, row); }),
      listKeeper(workers, [this](FileStatus status) { report({}, status); }) {
    tagReader.follow(*playlist, 0);
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

void TulPlayer::shutDown() {
    if (networkSharing->encoder != 0) networkSharing->stop();
    BASS_Free();
}

void TulPlayer::setExecutor(Executor executor) {
    const std::lock_guard lock(handOverMutex);
    m_executor = std::move(executor);
}

void TulPlayer::startCurrentEntry() {
    m_request = TulPlaybackRequest::play;
    m_skipsFailures = false;
    startEntry();
}

/// What was asked for while the last track faded out holds for its successor.
void TulPlayer::startEntry() {
    stream.reset();
    if (playlist->entryCount() == 0) return;

    TulPlaylistEntry& entry = *playlist->currentEntry();
    stream = std::make_unique<TulStream>();
    stream->title = entry.shownTitle();
    stream->artist = entry.artist;
    stream->album = entry.album;
    m_playingEntry = entry.id;
    stream->open(entry.source);
    if (m_request == TulPlaybackRequest::pause) stream->holdAtStart();
    stream->setEndSync(&TulPlayer::onStreamEnded);
    stream->setVolume(volume);
    stream->setBalance(balance);
    if (networkSharingEnabled) networkSharing->start(*stream);
    if (!entry.active) playlist->selectEntry(playlist->currentIndex);
    tagReader.prepare(entry, playlist->currentIndex);
    m_songInfoChanged = false;
    songChanged = true;
    prepareNext();
    // Nothing else reports the end of a source that the audio library did not take. That of a stream which
    // was opened ahead and failed is reported again: to no effect.
    if (stream->failure()) onStreamEnded(0, stream->handle, 0, nullptr);
}

void TulPlayer::prepareNext() {
    if (!stream) return;
    const bool endsHere = playlist->entryCount() == 0 || m_request == TulPlaybackRequest::stop;
    stream->setNext(endsHere ? std::string() : playlist->followingEntry()->source);
}

void TulPlayer::update() {
    networkSharing->dropDeadEncoder();
    prepareNext();
    const TulPlaybackState state = playbackState();
    if (state == TulPlaybackState::playing) markCurrentEntry({});
    // The end of a fade paused it just as it was resumed.
    if (state == TulPlaybackState::paused && m_request == TulPlaybackRequest::play) stream->play();
}

TulPlaybackState TulPlayer::playbackState() const {
    if (!stream) return ::playbackState({});
    return ::playbackState({.hasStream = true,
                            .failure = stream->failure(),
                            .connecting = stream->isConnecting(),
                            .active = stream->active(),
                            .request = m_request});
}

TulFailure TulPlayer::failure() const {
    return stream ? stream->failure() : TulFailure{};
}

void TulPlayer::play() {
    if (!stream || stream->failure()) return startCurrentEntry();
    // What has been removed is played to its end, but not once more.
    const bool isOver = m_request == TulPlaybackRequest::stop && playlist->currentIsRemoved();
    if (isOver && playlist->entryCount() > 0) return startCurrentEntry();
    m_request = TulPlaybackRequest::play;
    prepareNext();
    stream->setVolume(volume); // a pause has left it at 0
    stream->play();
}

void TulPlayer::pause() {
    if (!isStarted(playbackState())) return;
    m_request = TulPlaybackRequest::pause;
    stream->fadeOutAndPause();
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
    m_request = TulPlaybackRequest::stop;
    prepareNext();
    stream->fadeOutAndStop();
}

void TulPlayer::restartCurrent() {
    if (!stream) return;
    stream->seek(0.0);
    play();
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
    if (const TulFailure failure = stream->failure()) {
        markCurrentEntry(failure);
        if (!goesOnAfter(failure)) return;
    } else {
        m_failedInARow = 0;
    }
    if (playlist->entryCount() == 0 || m_request == TulPlaybackRequest::stop) return stop();
    playlist->nextEntry();
    m_skipsFailures = true;
    startEntry();
}

/// What the user selected stays, and so does what was paused. What follows a track by itself is skipped,
/// until every entry has been tried.
bool TulPlayer::goesOnAfter(const TulFailure& failure) {
    if (failure.kind == TulFailure::Kind::lost) {
        m_failedInARow = 0; // it has played
        return m_request == TulPlaybackRequest::play;
    }
    return m_skipsFailures && ++m_failedInARow < playlist->entryCount();
}

void TulPlayer::markCurrentEntry(const TulFailure& failure) {
    if (TulPlaylistEntry* entry = entryOfStream()) entry->failure = failure;
}

const TulPlaylistEntry* TulPlayer::playingEntry() const {
    return entryOfStream();
}

TulPlaylistEntry* TulPlayer::entryOfStream() const {
    if (playlist->entryCount() == 0) return nullptr;
    TulPlaylistEntry* const current = playlist->currentEntry();
    return current->id == m_playingEntry ? current : nullptr;
}

void TulPlayer::setVolume(float newVolume) {
    // Setting it would end a fade; play() sets it again.
    if (stream && playbackState() != TulPlaybackState::fadingOut) stream->setVolume(newVolume);
    volume = newVolume;
}

void TulPlayer::setBalance(float newBalance) {
    if (stream) stream->setBalance(newBalance);
    balance = newBalance;
}

void TulPlayer::entryChanged(const TulPlaylistEntry& entry, std::int32_t row) {
    if (stream && entry.id == m_playingEntry) {
        stream->title = entry.shownTitle();
        stream->artist = entry.artist;
        stream->album = entry.album;
        m_songInfoChanged = true;
    }
    if (rowChanged) rowChanged(row);
}

bool TulPlayer::takeSongChanged() {
    return std::exchange(songChanged, false);
}

bool TulPlayer::takeSongInfoChanged() {
    return std::exchange(m_songInfoChanged, false);
}
