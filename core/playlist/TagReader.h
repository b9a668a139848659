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

/// Fills what is missing in the rows of a playlist from their files' tags: first the entry that plays, then
/// the rows that are seen, then the rest in order. The result is that of
/// TulPlaylistEntry::readTrackInfo(true) on one row after another. Workers read; a result goes to the row
/// that it was read for by the entry's id, wherever that row is by then, and nowhere when it is gone.
///
/// Threads: main thread only.
class TagReader {
public:
    /// How many of the rows that were to be read have been; a total of 0 when all are.
    struct Progress {
        std::size_t done = 0;
        std::size_t total = 0;
    };

    /// `changed` is called when an entry has got its texts or its picture.
    using Changed = std::function<void(const TulPlaylistEntry& entry, std::int32_t row)>;

    TagReader(Workers& workers, Changed changed);

    /// The list whose rows are filled from now on; it must live until there is another. `unread` is its
    /// `unreadCount`, which takes long for a long list. Nothing is read yet.
    /// Rows of the list before that are being read stay unread.
    void follow(TulPlaylist& playlist, std::size_t unread);
    /// Reads the rest, in order.
    void readOn();
    /// These rows have been inserted.
    void rowsInserted(const TulRows& rows);
    /// These entries have been removed from the list.
    void rowsRemoved(const TulPlaylist::Entries& removed);
    /// Reads this row soon: it is seen.
    void want(std::int32_t row);
    /// Reads this entry of the list, which starts to play, and its picture, before everything else.
    void prepare(const TulPlaylistEntry& entry, std::int32_t row);
    /// Something of the entry that was prepared last is still being read.
    [[nodiscard]] bool isPreparing() const { return m_preparing.tags || m_preparing.picture; }

    /// Leaves the rows that have not been read unread, and those that are appended from now on, too, until
    /// `goOn`. What is seen or played is still read.
    void stop();
    /// Rows that are appended from now on are read again.
    void goOn() { m_stopped = false; }
    [[nodiscard]] Progress progress() const;

private:
    struct Reading {
        std::int32_t row; ///< Where the entry was when last looked for.
        bool counts;      ///< In the progress.
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
    void giveBack(TulPlaylistEntry& entry);
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
    std::deque<Wanted> m_wanted;                          ///< The last one first.
    Preparing m_preparing;

    std::int32_t m_next = 0;         ///< Those before have been read, but for what was moved there.
    std::size_t m_unread = 0;        ///< To be read, and not given to a worker yet.
    std::size_t m_done = 0;          ///< Since nothing was left to read.
    std::size_t m_counting = 0;      ///< Of those with a worker.
    std::size_t m_wantedReading = 0; ///< The same.
    bool m_stopped = false;

    std::size_t m_ahead; ///< So many rows are given to the workers at a time.
    std::size_t m_taken = 0;
    std::chrono::steady_clock::time_point m_takenSince;
};
