#pragma once

#include "core/background/Workers.h"
#include "core/playlist/TulPlaylist.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <optional>
#include <unordered_map>

/// Reads missing texts of a playlist's entries from their files' tags: first the entry that plays, then the
/// visible rows, then the rest in order. Workers read. A result is assigned by the entry's id, so that rows
/// may be moved meanwhile; it is dropped when the entry has left the list.
///
/// Threads: main thread only.
class TagReader {
public:
    /// The number of rows that have been read, and of all to be read; 0 of 0 when all are.
    struct Progress {
        std::size_t done = 0;
        std::size_t total = 0;
    };

    /// `changed` is called when texts or picture of an entry have been read.
    using Changed = std::function<void(const TulPlaylistEntry& entry, std::int32_t row)>;

    TagReader(Workers& workers, Changed changed);

    /// Sets the list to read for; it must live until the next call. `unread` is its `unreadCount`, which
    /// takes long for a long list. Starts no reading. Rows of the previous list that are being read stay
    /// unread.
    void follow(TulPlaylist& playlist, std::size_t unread);
    /// Reads the remaining rows, in order.
    void readRest();
    /// Notifies that rows have been inserted.
    void rowsInserted(const TulRows& rows);
    /// Notifies that entries have been removed from the list.
    void rowsRemoved(const TulPlaylist::Entries& removed);
    /// Reads a row soon, because it is visible.
    void want(std::int32_t row);
    /// Reads tags and picture of an entry that starts to play, before all others.
    void prepare(const TulPlaylistEntry& entry, std::int32_t row);
    /// True while tags or picture of the entry prepared last are being read.
    [[nodiscard]] bool isPreparing() const { return m_preparing.tags || m_preparing.picture; }

    /// Stops reading, also of rows that are appended later, until `resume`. Visible and playing rows are
    /// still read.
    void stop();
    /// Reads rows that are appended from now on.
    void resume() { m_stopped = false; }
    [[nodiscard]] Progress progress() const;

private:
    struct Reading {
        std::int32_t row; ///< The entry's last known row.
        bool counts;      ///< Counts in the progress.
        bool wanted;
    };
    struct Wanted {
        std::uint64_t id;
        std::int32_t row;
    };
    struct Preparing {
        std::uint64_t id = 0;
        bool tags = false;
        bool picture = false;
    };

    void leaveList();
    void count(TulPlaylistEntry& entry);
    void cancelReading(TulPlaylistEntry& entry);
    void readWanted();
    [[nodiscard]] std::int32_t nextUnread();
    void read(std::int32_t row, Workers::Lane lane, bool wanted);
    void start(const TulPlaylistEntry& entry, Workers::Lane lane);
    void take(std::uint64_t id, const std::optional<TrackInfo>& info);
    void fill(std::uint64_t id, const std::optional<TrackInfo>& info);
    void takePicture(std::uint64_t id, TulPlaylistEntry& found);
    [[nodiscard]] bool isAt(std::int32_t row, std::uint64_t id) const;
    void findRows();
    void adaptAhead();

    Workers& m_workers;
    Changed m_changed;
    TulPlaylist* m_playlist = nullptr;
    std::unordered_map<std::uint64_t, Reading> m_reading; ///< By the entries' ids.
    std::deque<Wanted> m_wanted;                          ///< The last requested first.
    Preparing m_preparing;

    std::int32_t m_next = 0;         ///< Rows before it have been read, except rows that were moved there.
    std::size_t m_unread = 0;        ///< Rows to be read that no worker has yet.
    std::size_t m_done = 0;          ///< Rows read since nothing was left to read.
    std::size_t m_counting = 0;      ///< Rows with a worker that count in the progress.
    std::size_t m_wantedReading = 0; ///< Visible rows with a worker.
    bool m_stopped = false;

    std::size_t m_ahead; ///< How many rows the workers have at a time.
    std::size_t m_taken = 0;
    std::chrono::steady_clock::time_point m_takenSince;
};
