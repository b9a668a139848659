#include "core/player/TulPlayer.h"

#include "core/player/TulNetworkSharing.h"

#include <mutex>
#include <utility>

namespace {

/// Guards TulPlayer::instance and its executor: the main thread changes them, the sync thread reads them.
/// Never held during a call.
std::mutex instanceMutex;

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
        const std::lock_guard lock(instanceMutex);
        instance = this;
    }
    BASS_Init(-1, outputRate, 0, nullptr, nullptr);
}

TulPlayer::~TulPlayer() {
    {
        const std::lock_guard lock(instanceMutex);
        if (instance == this) instance = nullptr;
    }
    if (networkSharing->isActive()) networkSharing->stop();
}

void TulPlayer::shutDown() {
    if (networkSharing->encoder != 0) networkSharing->stop();
    BASS_Free();
}

void TulPlayer::setExecutor(Executor executor) {
    const std::lock_guard lock(instanceMutex);
    m_executor = std::move(executor);
}

void TulPlayer::startCurrentEntry() {
    m_request = TulPlaybackRequest::play;
    m_skipsFailures = false;
    startEntry();
}

/// Keeps the last request: a pause during the previous track's fade-out applies to this entry.
void TulPlayer::startEntry() {
    stream.reset();
    if (playlist->entryCount() == 0) return;

    TulPlaylistEntry& entry = *playlist->currentEntry();
    stream = std::make_unique<TulStream>();
    m_streamTitle = {};
    setTexts(entry);
    m_playingEntry = entry.id;
    if (m_stopsAfter != entry.id) m_stopsAfter = 0;
    m_order.started(*playlist);
    stream->open(entry.source);
    if (m_request == TulPlaybackRequest::pause) stream->holdAtStart();
    const auto resumesAt = std::exchange(m_resumesAt, {});
    if (resumesAt.entry == entry.id) stream->seek(resumesAt.position);
    stream->setEndSync(&TulPlayer::onStreamEnded);
    stream->setSinkRemovedSync(&TulPlayer::onSinkRemoved);
    stream->setVolume(volume);
    stream->setBalance(balance);
    if (networkSharingEnabled) networkSharing->start(*stream);
    if (!entry.active) playlist->selectEntry(playlist->currentIndex);
    tagReader.prepare(entry, playlist->currentIndex);
    m_songInfoChanged = false;
    songChanged = true;
    prepareNext();
    // A source that the audio library rejects has no end sync. For a stream that was opened ahead and failed
    // this is a second report, which has no effect.
    if (stream->failure()) onStreamEnded(0, stream->handle, 0, nullptr);
}

void TulPlayer::prepareNext() {
    if (!stream) return;
    const bool endsHere = m_stopsAfter != 0 || m_request == TulPlaybackRequest::stop;
    const TulPlaylistEntry* const next = endsHere ? nullptr : m_order.followingEntry(*playlist);
    stream->setNext(next ? next->source : std::string());
}

void TulPlayer::update() {
    networkSharing->dropDeadEncoder();
    prepareNext();
    followStreamTitle();
    const TulPlaybackState state = playbackState();
    if (state == TulPlaybackState::playing) {
        markCurrentEntry({});
        takeLength();
    }
    // The fade's end sync may pause the stream just after it was resumed.
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
    // An entry that was removed while it played is not played again.
    const bool isOver = m_request == TulPlaybackRequest::stop && playlist->currentIsRemoved();
    if (isOver && playlist->entryCount() > 0) return startCurrentEntry();
    m_request = TulPlaybackRequest::play;
    prepareNext();
    stream->setVolume(volume); // the fade before a pause leaves it at 0
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
    m_order.nextEntry(*playlist) ? startCurrentEntry() : restartCurrent();
}

void TulPlayer::previous() {
    m_order.previousEntry(*playlist) ? startCurrentEntry() : restartCurrent();
}

void TulPlayer::setRepeat(TulRepeat repeat) {
    m_order.setRepeat(repeat);
    prepareNext();
}

void TulPlayer::setShuffled(bool shuffled) {
    m_order.setShuffled(shuffled);
    prepareNext();
}

void TulPlayer::setStopsAfterEntry(bool stops) {
    m_stopsAfter = stops && stream ? m_playingEntry : 0;
    prepareNext();
    if (rowChanged) rowChanged(playlist->currentIndex);
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
    handOver(channel, &TulPlayer::streamEnded);
}

void TulPlayer::onSinkRemoved(HSYNC /*sync*/, DWORD channel, DWORD /*data*/, void* /*user*/) {
    handOver(channel, &TulPlayer::sinkRemoved);
}

void TulPlayer::handOver(HSTREAM channel, void (TulPlayer::*work)(HSTREAM)) {
    Executor executor;
    {
        const std::lock_guard lock(instanceMutex);
        if (!instance) return;
        executor = instance->m_executor;
    }
    const auto task = [channel, work] {
        if (instance) (instance->*work)(channel);
    };
    executor ? executor(task) : task();
}

/// Ignores the end of a stream that a command has replaced meanwhile.
void TulPlayer::streamEnded(HSTREAM ended) {
    if (!stream || stream->handle != ended) return;
    const TulFailure failure = stream->failure();
    if (failure) {
        markCurrentEntry(failure);
        if (!advancesAfter(failure)) return;
    } else {
        m_failedInARow = 0;
    }
    advance(failure.kind != TulFailure::Kind::none);
}

/// Without a fade, which would be played somewhere else.
void TulPlayer::sinkRemoved(HSTREAM channel) {
    const bool isCurrent = stream && stream->handle == channel;
    if (!isCurrent || !pausesWhenSinkIsRemoved || !isStarted(playbackState())) return;
    m_request = TulPlaybackRequest::pause;
    stream->pauseAtOnce();
}

/// Starts the entry that follows. An entry that failed is not repeated.
void TulPlayer::advance(bool afterFailure) {
    const bool endsHere = std::exchange(m_stopsAfter, 0) != 0 || m_request == TulPlaybackRequest::stop;
    if (endsHere || !m_order.followingEntry(*playlist)) return stop();
    if (afterFailure || m_order.repeat() != TulRepeat::track) m_order.nextEntry(*playlist);
    m_skipsFailures = true;
    startEntry();
}

/// Whether to skip a failed entry. An entry that the user started is not skipped, nor one that was paused.
/// One that followed a track is, until every entry has been tried.
bool TulPlayer::advancesAfter(const TulFailure& failure) {
    if (failure.kind == TulFailure::Kind::lost) {
        m_failedInARow = 0; // it played before it was lost
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

/// Takes the stream's length for an entry whose tags do not state it, such as an address.
void TulPlayer::takeLength() {
    if (playlist->entryCount() == 0) return;
    TulPlaylistEntry& entry = *playlist->currentEntry();
    const bool isUnknown = entry.length <= 0 && entry.tags == TulPlaylistEntry::Tags::read;
    if (entry.id != m_playingEntry || !isUnknown || stream->length() <= 0) return;
    entry.length = stream->length();
    if (rowChanged) rowChanged(playlist->currentIndex);
}

void TulPlayer::setVolume(float newVolume) {
    // Setting the stream's volume would end a fade; play() sets it again.
    if (stream && playbackState() != TulPlaybackState::fadingOut) stream->setVolume(newVolume);
    volume = newVolume;
}

void TulPlayer::setBalance(float newBalance) {
    if (stream) stream->setBalance(newBalance);
    balance = newBalance;
}

void TulPlayer::setLoudness(TulLoudness loudness) {
    const bool isTrack = loudness == TulLoudness::track;
    const DWORD gain = loudness == TulLoudness::album ? BASS_REPLAYGAIN_ALBUM : BASS_REPLAYGAIN_OFF;
    BASS_SetConfig(BASS_CONFIG_REPLAYGAIN, isTrack ? BASS_REPLAYGAIN_TRACK : gain);
}

void TulPlayer::entryChanged(const TulPlaylistEntry& entry, std::int32_t row) {
    if (stream && entry.id == m_playingEntry) {
        setTexts(entry);
        m_songInfoChanged = true;
    }
    if (rowChanged) rowChanged(row);
}

void TulPlayer::setTexts(const TulPlaylistEntry& entry) {
    m_entryTexts = {.station = {}, .title = entry.shownTitle(), .artist = entry.artist, .album = entry.album};
    showTexts();
}

/// Texts that the stream sends replace the entry's, and the station's name replaces the album.
void TulPlayer::showTexts() {
    const TulStreamTitle& said = m_streamTitle;
    const TulStreamTitle& texts = said.title.empty() ? m_entryTexts : said;
    stream->title = said.title.empty() && !said.station.empty() ? said.station : texts.title;
    stream->artist = texts.artist;
    stream->album = said.title.empty() || said.station.empty() ? texts.album : said.station;
}

void TulPlayer::followStreamTitle() {
    if (!stream) return;
    TulStreamTitle said = stream->streamTitle();
    if (said == m_streamTitle) return;
    m_streamTitle = std::move(said);
    showTexts();
    m_songInfoChanged = true;
}

bool TulPlayer::takeSongChanged() {
    return std::exchange(songChanged, false);
}

bool TulPlayer::takeSongInfoChanged() {
    return std::exchange(m_songInfoChanged, false);
}
