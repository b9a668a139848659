#pragma once

#include "core/background/Workers.h"
#include "core/player/TulLoudness.h"
#include "core/player/TulPlayOrder.h"
#include "core/player/TulPlaybackState.h"
#include "core/player/TulResumption.h"
#include "core/player/TulStream.h"
#include "core/playlist/ListKeeper.h"
#include "core/playlist/TagReader.h"
#include "core/playlist/TulInternalPlaylistManager.h"
#include "core/playlist/TulPlaylist.h"
#include "core/playlist/TulPlaylistFileFactory.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

class TulNetworkSharing;

/// A playlist that was replaced by another. `list` is null until its unsaved changes have been stored.
struct LeftPlaylist {
    std::unique_ptr<TulPlaylist> list;
    std::function<void()> arrived; ///< Called when `list` is set later.
};

/// The core's interface to the shell: carries out commands on the current playlist and its stream, and starts
/// the next entry when a track ends.
///
/// Threads: main thread only. The audio library's sync thread reports the end of a track, and posts the work
/// to the main thread through the executor. Workers read and write files; while `workers` have no wake
/// function they run in place, and everything is done when a call returns.
class TulPlayer {
public:
    /// Posts a task to the main thread. Called on the sync thread.
    using Executor = std::function<void(std::function<void()>)>;

    /// Starts the audio library, which opens the default output device in the background. Where the library
    /// has no output at all the player works, but no source opens.
    TulPlayer();
    TulPlayer(const TulPlayer&) = delete;
    TulPlayer& operator=(const TulPlayer&) = delete;
    /// Ends playing and sharing. A track end that is still queued is dropped.
    ~TulPlayer();

    /// 0 silent .. 1 full.
    float volume = 0.5F;
    /// -1 left .. 0 middle .. 1 right.
    float balance = 0.0F;
    std::unique_ptr<TulPlaylistFileFactory> playlistFileFactory;
    /// Never null.
    std::unique_ptr<TulPlaylist> playlist;
    /// The stream of the entry started last; null before the first start.
    std::unique_ptr<TulStream> stream;
    std::unique_ptr<TulInternalPlaylistManager> internalPlaylistManager;
    std::unique_ptr<TulNetworkSharing> networkSharing;
    bool songChanged = false;
    bool networkSharingEnabled = false;
    /// When the sink is removed that is played to.
    bool pausesWhenSinkIsRemoved = true;

    Workers workers;
    TagReader tagReader;
    ListKeeper listKeeper;
    /// Called when the texts, length or mark of a row have changed.
    std::function<void(std::int32_t row)> rowChanged;
    /// Called when the user has edited the playlist (`listKeeper` is to store it soon), and when it was
    /// saved.
    std::function<void()> playlistEdited;
    /// Called when a playlist file or the store of internal playlists could not be read or written
    /// completely; with an empty path when unsaved changes could not be stored.
    std::function<void(const std::string& path, FileStatus status)> reportFile;
    /// Called when another list has replaced the playlist.
    enum class Replacement { opened, restored, cleared, reverted };
    std::function<void(std::shared_ptr<LeftPlaylist> left, Replacement why)> playlistReplaced;

    /// The player that is notified of track ends; null when there is none.
    static TulPlayer* instance;

    /// Set it before anything plays. Without one the work runs on the sync thread.
    void setExecutor(Executor executor);
    void setStorePath(const std::string& path);
    /// The folder in whose subfolder "lists" unsaved changes are stored.
    void setStateFolder(const std::string& path);
    /// Reads the store of internal playlists.
    void loadInternalPlaylists();
    /// The last call before the process ends: ends sharing and the audio library. Waits for the library's
    /// threads, 200 ms at most.
    void shutDown();

    /// Replaces the stream by one of the playlist's current entry, and plays it.
    void startCurrentEntry();
    /// Resumes, or starts the current entry when there is no stream or it has failed.
    void play();
    /// Fades out, then pauses; does nothing unless isStarted(playbackState()).
    void pause();
    /// True while the stream plays and does not fade out. See playbackState for what to show.
    [[nodiscard]] bool isPlaying() const;
    [[nodiscard]] TulPlaybackState playbackState() const;
    [[nodiscard]] TulPlaybackRequest request() const { return m_request; }
    /// The reason of TulPlaybackState::failed.
    [[nodiscard]] TulFailure failure() const;
    void next();
    void previous();
    /// The play order. Not stored.
    [[nodiscard]] TulRepeat repeat() const { return m_order.repeat(); }
    void setRepeat(TulRepeat repeat);
    [[nodiscard]] bool isShuffled() const { return m_order.isShuffled(); }
    void setShuffled(bool shuffled);
    /// Whether playing stops after the current entry. Reset when another entry starts.
    [[nodiscard]] bool stopsAfterEntry() const { return m_stopsAfter != 0; }
    void setStopsAfterEntry(bool stops);
    /// Whether playing stops after this entry.
    [[nodiscard]] bool stopsAfter(const TulPlaylistEntry& entry) const { return m_stopsAfter == entry.id; }
    /// Fades out and seeks to the start of the stream, where play() then begins.
    void stop();
    void restartCurrent();
    /// Sync callback: the stream `channel` has been played to its end, or has failed. Starts the next entry,
    /// unless the entry failed and was started by the user.
    static void onStreamEnded(HSYNC sync, DWORD channel, DWORD data, void* user);
    /// Sync callback: what `channel` is played to is no more. A started stream is paused at once.
    static void onSinkRemoved(HSYNC sync, DWORD channel, DWORD data, void* user);

    void setVolume(float newVolume);
    void setBalance(float newBalance);
    /// Applies to the stream that plays, at once, and to later ones. Independent of the volume.
    void setLoudness(TulLoudness loudness);

    /// Replaces the playlist and starts it; for an empty one the stream plays on.
    void setPlaylist(std::unique_ptr<TulPlaylist> newPlaylist);
    /// The result of opening a playlist file. Only `done` replaces the playlist.
    enum class Opening { done, rejected, givenUp /**< for another file, or an empty list */ };
    using Opened = std::function<void(Opening)>;
    /// Opens a playlist file with its unsaved changes, and registers it as an internal playlist; one that is
    /// registered keeps its name there. `opened` is called once.
    void openPlaylist(const std::string& path, Opened opened = {});
    /// Opens one of `listKeeper.lists()`.
    void openUnsaved(const std::string& id, Opened opened = {});
    /// Opens the list of an earlier run: the playlist file, with the changes that are kept of it, or with an
    /// empty path the unsaved list that was changed at that time (`TulPlaylist::changedAt`; 0 for no
    /// changes). Nothing plays: a file waits, paused at its position, and an address is opened when play is
    /// pressed.
    void restorePlaylist(const std::string& path, std::int64_t changedAt, const TulResumption& resumption,
                         Opened opened = {});
    /// What `restorePlaylist` needs to go on here.
    [[nodiscard]] TulResumption resumption() const;
    /// Opens an internal playlist, unless it is the current playlist.
    void selectInternalPlaylist(std::int32_t index, Opened opened = {});
    /// Replaces a changed playlist by its file. The stream plays on.
    void revertPlaylist(Opened opened = {});
    /// Saves the playlist, and registers it as an internal playlist on success. A playlist without a name
    /// gets that of the file.
    void savePlaylist(const std::string& path);
    /// The last call before `shutDown`: stores unsaved changes and waits for all saves, two seconds at most.
    void finishSaving();

    /// Makes another list the playlist; the stream plays on. `unread` is its `unreadCount`. Returns the
    /// previous list.
    std::shared_ptr<LeftPlaylist> exchangePlaylist(std::unique_ptr<TulPlaylist> other, std::size_t unread);
    /// The entry that `stream` was opened for; null when it is not the playlist's current entry.
    [[nodiscard]] const TulPlaylistEntry* playingEntry() const;
    /// Destroys an object on a worker, for objects that take long to destroy.
    void discard(std::shared_ptr<void> object);

    // The user's edits: all that changes the list goes through these. `endEdit` follows what changes entries.

    /// As the functions of TulPlaylist; then missing tags are read.
    TulPlaylist::Entries removeEntries(const TulRows& rows);
    void insertEntries(const TulRows& rows, TulPlaylist::Entries added);
    /// Call it after a change of entries: prepares the next entry and notifies `playlistEdited`.
    void endEdit();
    /// For a list with a file the name is that of the internal playlist: it is stored at once, and must not
    /// be empty.
    void renamePlaylist(const std::string& name);
    /// Replaces the playlist by an empty one. The stream plays on.
    void clearPlaylist();

    /// Sets the source that follows the stream. Call it when the playlist has changed; `update` does so as
    /// well.
    void prepareNext();
    /// Polls the stream and the encoder for changes. Called by the slow timer.
    void update();

    /// True once after an entry has been started.
    bool takeSongChanged();
    /// True once after texts or picture of the playing entry have changed since it started.
    bool takeSongInfoChanged();

private:
    /// `unread` is the list's `unreadCount`.
    using Show = std::function<void(std::unique_ptr<TulPlaylist> list, std::size_t unread)>;

    void startEntry();
    static void handOver(HSTREAM channel, void (TulPlayer::*work)(HSTREAM));
    void streamEnded(HSTREAM ended);
    void sinkRemoved(HSTREAM channel);
    [[nodiscard]] bool advancesAfter(const TulFailure& failure);
    void takeLength();
    void advance(bool afterFailure);
    void setTexts(const TulPlaylistEntry& entry);
    void showTexts();
    void followStreamTitle();
    void markCurrentEntry(const TulFailure& failure);
    void setPlaylist(std::unique_ptr<TulPlaylist> newPlaylist, std::size_t unread);
    void replacePlaylist(std::unique_ptr<TulPlaylist> newPlaylist, std::size_t unread, Replacement why);
    /// Calls `show` with the list. When it cannot be read, ends the opening with `rejected`.
    void readPlaylist(const std::string& path, Show show);
    void readOrRestorePlaylist(const std::string& path);
    void resume(const TulResumption& resumption);
    void showOpened(std::unique_ptr<TulPlaylist> list, std::size_t unread);
    void showReverted(std::unique_ptr<TulPlaylist> list, std::size_t unread);
    void beginOpening(Opened opened);
    [[nodiscard]] TulPlaylistEntry* entryOfStream() const;
    void endOpening(Opening outcome);
    void noteSaved(const TulPlaylist& copy, std::uint64_t list, std::uint64_t edits);
    void registerPlaylist(const std::string& name, const std::string& path);
    void runOnStore(FileStatus (TulInternalPlaylistManager::*operation)());
    void takeStored(const TulInternalPlaylistManager& copy, FileStatus status);
    void report(const std::string& path, FileStatus status) const;
    void noteEdited();
    void entryChanged(const TulPlaylistEntry& entry, std::int32_t row);

    Executor m_executor;
    TulPlaybackRequest m_request = TulPlaybackRequest::stop;
    bool m_skipsFailures = false; ///< The entry was started by the end of another, not by the user.
    std::int64_t m_failedInARow = 0;
    std::uint64_t m_opening = 0; ///< Counts openings, to recognise one that was given up.
    Opened m_opened;
    std::uint64_t m_playingEntry = 0; ///< The id of the entry that `stream` was opened for.
    std::uint64_t m_stopsAfter = 0;   ///< The id of the entry after which playing stops; 0 for none.
    TulPlayOrder m_order;
    TulStreamTitle m_entryTexts;  ///< Texts of the playing entry.
    TulStreamTitle m_streamTitle; ///< Texts that its stream sent last.
    bool m_songInfoChanged = false;
    std::optional<TulResumption> m_resumption; ///< Of the list that is being opened.
    /// An entry that is to start at its position in an earlier run.
    struct {
        std::uint64_t entry = 0;
        double position = 0.0;
    } m_resumesAt;
};
