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

/// A playlist that is not shown any more. Changes in it that are in no file are stored first: as long as that
/// lasts it is null.
struct LeftPlaylist {
    std::unique_ptr<TulPlaylist> list;
    std::function<void()> arrived; ///< Called when it has been stored, unless it was there at once.
};

/// The one object of the core that the shell talks to: it turns commands into operations on the current
/// playlist and its stream, and goes on to the next entry when a track ends.
///
/// Threads: one, the main thread, makes all calls and reads all fields. The end of a track is heard on the
/// audio library's sync thread, which hands the work over through the executor. Files of the playlist are
/// read by workers; as long as these have no wake, everything is done when a call returns.
class TulPlayer {
public:
    /// Runs a task on the main thread, soon. Called from the sync thread.
    using Executor = std::function<void(std::function<void()>)>;

    /// Starts the audio library, which opens the default output device in the background and waits for it.
    /// Where none could ever be opened everything works, but no source opens.
    TulPlayer();
    TulPlayer(const TulPlayer&) = delete;
    TulPlayer& operator=(const TulPlayer&) = delete;
    /// Ends playing and sharing. An end of track that is still under way is dropped.
    ~TulPlayer();

    /// 0 silent .. 1 full.
    float volume = 0.5F;
    /// -1 left .. 0 middle .. 1 right.
    float balance = 0.0F;
    std::unique_ptr<TulPlaylistFileFactory> playlistFileFactory;
    /// Never null.
    std::unique_ptr<TulPlaylist> playlist;
    /// Of the entry started last; null before the first start.
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
    /// Called when a row of the playlist has got its texts.
    std::function<void(std::int32_t row)> rowChanged;
    /// Called when the user has edited the playlist, which `listKeeper` is to store soon, and when it was
    /// saved.
    std::function<void()> playlistEdited;
    /// Called when a playlist file or the store of internal playlists could not be read or written whole;
    /// with an empty path, when changes could not be stored.
    std::function<void(const std::string& path, FileStatus status)> reportFile;
    /// Called when another list has taken the place of this one.
    enum class Replacement { opened, restored, cleared, reverted };
    std::function<void(std::shared_ptr<LeftPlaylist> left, Replacement why)> playlistReplaced;

    /// The player that hears the end of tracks. Null when there is none.
    static TulPlayer* instance;

    /// To be set before anything plays. Without one the work is done where the end was heard.
    void setExecutor(Executor executor);
    void setStorePath(const std::string& path);
    /// Where changes that are not saved are kept.
    void setStateFolder(const std::string& path);
    /// Reads the store of internal playlists.
    void loadInternalPlaylists();
    /// The last call before the process ends: ends sharing and every sound. Waits for threads of the audio
    /// library for 200 ms at most.
    void shutDown();

    /// Replaces the stream by one of the playlist's current entry, which starts playing.
    void startCurrentEntry();
    /// Resumes, or starts the current entry when there is no stream or it has failed.
    void play();
    /// Fades out, then pauses; what is not started is left alone.
    void pause();
    /// Plays, with nothing in its way: see playbackState for what to show.
    [[nodiscard]] bool isPlaying() const;
    [[nodiscard]] TulPlaybackState playbackState() const;
    [[nodiscard]] TulPlaybackRequest request() const { return m_request; }
    /// Why the stream does not play, with TulPlaybackState::failed.
    [[nodiscard]] TulFailure failure() const;
    void next();
    void previous();
    /// In which order the entries are played, and what follows the last. For this run.
    [[nodiscard]] TulRepeat repeat() const { return m_order.repeat(); }
    void setRepeat(TulRepeat repeat);
    [[nodiscard]] bool isShuffled() const { return m_order.isShuffled(); }
    void setShuffled(bool shuffled);
    /// Whether playing stops at the end of the entry that plays now. Over with that entry.
    [[nodiscard]] bool stopsAfterEntry() const { return m_stopsAfter != 0; }
    void setStopsAfterEntry(bool stops);
    /// Whether that is this one.
    [[nodiscard]] bool stopsAfter(const TulPlaylistEntry& entry) const { return m_stopsAfter == entry.id; }
    /// Fades out and goes back to the start of the stream, where play() then begins.
    void stop();
    void restartCurrent();
    /// Sync callback: the stream on `channel` has been played to its end, or has failed. The next entry
    /// follows; but an entry that the user started and that failed stays.
    static void onStreamEnded(HSYNC sync, DWORD channel, DWORD data, void* user);
    /// Sync callback: what `channel` is played to is no more. A started stream is paused at once.
    static void onSinkRemoved(HSYNC sync, DWORD channel, DWORD data, void* user);

    void setVolume(float newVolume);
    void setBalance(float newBalance);
    /// Of what plays, at once, and of what will. Beside the volume.
    void setLoudness(TulLoudness loudness);

    /// Replaces the playlist and starts it; an empty one leaves the playing stream alone.
    void setPlaylist(std::unique_ptr<TulPlaylist> newPlaylist);
    /// What became of a playlist file. But for the first the playlist stays as it was.
    enum class Opening { done, rejected, givenUp /**< for another file, or an empty list */ };
    using Opened = std::function<void(Opening)>;
    /// Opens a playlist file, with the changes that are kept of it, and remembers it as an internal playlist
    /// under the name that it has there, if any. `opened` is called once.
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
    /// Opens one of the internal playlists, unless it is the one that is shown.
    void selectInternalPlaylist(std::int32_t index, Opened opened = {});
    /// Replaces a changed playlist by its file. What plays plays on.
    void revertPlaylist(Opened opened = {});
    /// Saves the playlist as it is now, one without a name under that of the file, and remembers it as an
    /// internal playlist when that has worked.
    void savePlaylist(const std::string& path);
    /// The last call before `shutDown`: stores what is still to be stored. Waits two seconds at most.
    void finishSaving();

    /// Makes another list, with its `unreadCount`, the current one; what plays is left alone. Returns the one
    /// before.
    std::shared_ptr<LeftPlaylist> exchangePlaylist(std::unique_ptr<TulPlaylist> other, std::size_t unread);
    /// The entry that `stream` was opened for; null when the list does not have it.
    [[nodiscard]] const TulPlaylistEntry* playingEntry() const;
    /// Destroys on a worker what takes a while.
    void discard(std::shared_ptr<void> object);

    // The user's edits: all that changes the list goes through these. `endEdit` follows what changes entries.

    /// As the playlist's, and missing tags are read.
    TulPlaylist::Entries removeEntries(const TulRows& rows);
    void insertEntries(const TulRows& rows, TulPlaylist::Entries added);
    /// All entries are in place: the next one is prepared, and the changes are stored soon.
    void endEdit();
    /// At once for good where the list has a file: as an internal playlist, which needs a name.
    void renamePlaylist(const std::string& name);
    /// Leaves the list for an empty one. The playing stream plays on.
    void clearPlaylist();

    /// Names the source that follows the stream. To be called when the playlist was changed; `update` does so
    /// as well.
    void prepareNext();
    /// Follows what happens by itself. To be called now and then, as by the slow timer.
    void update();

    /// Whether an entry has been started since the last call.
    bool takeSongChanged();
    /// Whether what is known of the entry that plays, its texts or its picture, has changed since the last
    /// call and since it started.
    bool takeSongInfoChanged();

private:
    /// `unread` is the list's `unreadCount`.
    using Show = std::function<void(std::unique_ptr<TulPlaylist> list, std::size_t unread)>;

    void startEntry();
    static void handOver(HSTREAM channel, void (TulPlayer::*work)(HSTREAM));
    void streamEnded(HSTREAM ended);
    void sinkRemoved(HSTREAM channel);
    [[nodiscard]] bool goesOnAfter(const TulFailure& failure);
    void takeLength();
    void goOn(bool afterFailure);
    void setTexts(const TulPlaylistEntry& entry);
    void showTexts();
    void followStreamTitle();
    void markCurrentEntry(const TulFailure& failure);
    void setPlaylist(std::unique_ptr<TulPlaylist> newPlaylist, std::size_t unread);
    void replacePlaylist(std::unique_ptr<TulPlaylist> newPlaylist, std::size_t unread, Replacement why);
    /// `show` gets a list that could be read; for any other the opening ends.
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
    bool m_skipsFailures = false; ///< The entry was started by the end of another.
    std::int64_t m_failedInARow = 0;
    std::uint64_t m_opening = 0; ///< Counts what has been opened or given up.
    Opened m_opened;
    std::uint64_t m_playingEntry = 0; ///< The id of the one that `stream` was opened for.
    std::uint64_t m_stopsAfter = 0;   ///< The id of the one that playing stops after; 0 for none.
    TulPlayOrder m_order;
    TulStreamTitle m_entryTexts;  ///< Of the entry that plays, whatever its stream says.
    TulStreamTitle m_streamTitle; ///< What its stream said last.
    bool m_songInfoChanged = false;
    std::optional<TulResumption> m_resumption; ///< Of the list that is being opened.
    /// An entry that is to start at its position in an earlier run.
    struct {
        std::uint64_t entry = 0;
        double position = 0.0;
    } m_resumesAt;
};
