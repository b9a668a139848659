#include "core/player/TulPlayer.h"

#include "core/files/overwriteFile.h"
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
      tagReader(workers, [this](const auto& entry, auto row) { entryChanged(entry, row); }) {
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

void TulPlayer::setStorePath(const std::string& path) {
    internalPlaylistManager->storePath = path;
}

void TulPlayer::loadInternalPlaylists() {
    runOnStore(&TulInternalPlaylistManager::load);
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

/// Nothing when the list has no longer the entry that the stream was started for.
void TulPlayer::markCurrentEntry(const TulFailure& failure) {
    if (playlist->entryCount() == 0) return;
    TulPlaylistEntry& entry = *playlist->currentEntry();
    if (entry.source == stream->source) entry.failure = failure;
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

void TulPlayer::setPlaylist(std::unique_ptr<TulPlaylist> newPlaylist) {
    const std::size_t unread = newPlaylist->unreadCount();
    setPlaylist(std::move(newPlaylist), unread);
}

void TulPlayer::setPlaylist(std::unique_ptr<TulPlaylist> newPlaylist, std::size_t unread) {
    replacePlaylist(std::move(newPlaylist), unread);
    playlist->entryCount() > 0 ? startCurrentEntry() : prepareNext();
    tagReader.readOn();
}

void TulPlayer::replacePlaylist(std::unique_ptr<TulPlaylist> newPlaylist, std::size_t unread) {
    playlist.swap(newPlaylist);
    tagReader.follow(*playlist, unread);
    discard(std::move(newPlaylist));
}

/// To destroy a long one takes a while.
void TulPlayer::discard(std::unique_ptr<TulPlaylist> list) {
    workers.run(Workers::Lane::bulk, [old = std::shared_ptr<TulPlaylist>(std::move(list))](const auto&) {});
}

void TulPlayer::openPlaylist(const std::string& path, Opened opened) {
    endOpening(Opening::givenUp);
    m_opened = std::move(opened);
    const auto read =
        [this, path, opening = m_opening,
         file = std::shared_ptr(playlistFileFactory->createPlaylistFile(path))](const Workers::Reply& reply) {
            completeSaves();
            FileStatus status{};
            const auto result = std::make_shared<std::unique_ptr<TulPlaylist>>(file->read(path, status));
            const std::size_t unread = *result ? (*result)->unreadCount() : 0;
            reply.post([this, path, opening, result, status, unread] {
                if (opening != m_opening) return discard(std::move(*result));
                report(path, status);
                if (!*result) return endOpening(Opening::rejected);
                setPlaylist(std::move(*result), unread);
                rememberPlaylist(path);
                endOpening(Opening::done);
            });
        };
    workers.run(Workers::Lane::own, read);
}

void TulPlayer::endOpening(Opening outcome) {
    ++m_opening;
    if (const Opened opened = std::exchange(m_opened, {})) opened(outcome);
}

void TulPlayer::savePlaylist(const std::string& path) {
    const auto save = [this, path, list = playlist->id, name = playlist->name,
                       file = std::shared_ptr(playlistFileFactory->createPlaylistFile(path)),
                       copy = std::shared_ptr(playlist->copyToSave()),
                       store = std::make_shared<TulInternalPlaylistManager>(*internalPlaylistManager)](
                          const Workers::Reply& reply) {
        const FileStatus written = file->write(*copy, path);
        const bool isThere = written == FileStatus::done || written == FileStatus::postponed;
        if (isThere) store->addPlaylist(name, path);
        const FileStatus remembered = isThere ? store->save() : FileStatus::done;
        reply.post([=, this] {
            report(path, written);
            if (!isThere) return;
            const std::int32_t before = internalPlaylistManager->currentIndex;
            internalPlaylistManager->addPlaylist(name, path);
            if (list != playlist->id) internalPlaylistManager->currentIndex = before; // another was opened
            takeStored(*store, remembered);
        });
    };
    workers.run(Workers::Lane::saving, save);
}

void TulPlayer::rememberPlaylist(const std::string& path) {
    internalPlaylistManager->addPlaylist(playlist->name, path);
    runOnStore(&TulInternalPlaylistManager::save);
}

void TulPlayer::renameInternalPlaylist(const std::string& path, const std::string& name) {
    internalPlaylistManager->renamePlaylist(path, name);
    runOnStore(&TulInternalPlaylistManager::save);
}

/// What a killed program has left unfinished may be the store. In the lane for saving, so that what comes
/// back is never older than what came before.
void TulPlayer::runOnStore(FileStatus (TulInternalPlaylistManager::*operation)()) {
    const auto run = [this, operation,
                      store = std::make_shared<TulInternalPlaylistManager>(*internalPlaylistManager)](
                         const Workers::Reply& reply) {
        completeSaves();
        const FileStatus status = (*store.*operation)();
        reply.post([this, store, status] { takeStored(*store, status); });
    };
    workers.run(Workers::Lane::saving, run);
}

void TulPlayer::takeStored(const TulInternalPlaylistManager& copy, FileStatus status) {
    if (status == FileStatus::done || status == FileStatus::cut) internalPlaylistManager->takeStored(copy);
    report(internalPlaylistManager->storePath, status);
}

void TulPlayer::report(const std::string& path, FileStatus status) const {
    if (status != FileStatus::done && reportFile) reportFile(path, status);
}

void TulPlayer::clearPlaylist() {
    endOpening(Opening::givenUp);
    replacePlaylist(std::make_unique<TulPlaylist>(), 0);
    prepareNext();
}

void TulPlayer::selectInternalPlaylist(std::int32_t index, Opened opened) {
    const bool isOther = index != internalPlaylistManager->currentIndex;
    if (!isOther || index < 0 || index >= internalPlaylistManager->count()) {
        if (opened) opened(Opening::givenUp);
        return;
    }
    const std::string path = internalPlaylistManager->playlistAt(index).first;
    openPlaylist(path, [this, index, opened = std::move(opened)](Opening outcome) {
        if (outcome == Opening::done) internalPlaylistManager->currentIndex = index;
        if (opened) opened(outcome);
    });
}

void TulPlayer::appendEntries(std::vector<std::unique_ptr<TulPlaylistEntry>> entries) {
    const auto first = static_cast<std::int32_t>(playlist->entryCount());
    for (auto& entry : entries)
        playlist->appendEntry(std::move(entry));
    tagReader.rowsAppended(first);
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
