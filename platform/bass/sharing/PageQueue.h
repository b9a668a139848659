#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace bass {

/// The stream as its listeners read it: one queue of pages for all of them, each at a place of its own. It
/// keeps the header pages and the last 512 KiB; who needs older ones is too far behind.
///
/// Threads: any.
class PageQueue {
public:
    using Page = std::vector<std::byte>;
    static constexpr std::size_t mostBehind = 524288;

    /// Where a listener is.
    struct Place {
        bool joined = false;
        std::size_t headersLeft = 0; ///< Of the header pages, which come first.
        std::uint64_t page = 0;      ///< The page after them, counted from the stream's first.

        void moveOn() { headersLeft > 0 ? --headersLeft : ++page; }
    };
    struct Reading {
        static constexpr std::size_t most = 16;
        std::array<std::shared_ptr<const Page>, most>
            pages; ///< From the place on; the first `count` are set.
        std::size_t count = 0;
        bool leave = false; ///< Too far behind, or the stream has ended: nothing more comes.
    };

    void addHeader(Page page);
    void add(Page page);
    /// No more pages come. Those that are there can be read.
    void end();
    bool hasEnded() const;

    /// Of pages that a new listener gets at once. Before any listener comes.
    void setBurst(std::size_t bytes);
    /// What comes next. A listener joins at the header pages, after which come recent whole pages of at most
    /// the burst, and then the live ones.
    Reading read(Place& place) const;

    /// The stream name (icy-name) sent to new listeners. Must be valid in an HTTP header.
    void setName(std::string name);
    std::string name() const;

    void setBitsPerSecond(int bits) { m_bitsPerSecond = bits; }
    int bitsPerSecond() const { return m_bitsPerSecond; }

private:
    using Lock = std::lock_guard<std::mutex>;

    std::uint64_t joiningPage(const Lock& lock) const;

    std::atomic<int> m_bitsPerSecond{0};
    mutable std::mutex m_mutex;
    std::vector<std::shared_ptr<const Page>> m_headers; ///< Guarded by m_mutex, as all below.
    std::deque<std::shared_ptr<const Page>> m_pages;
    std::uint64_t m_first = 0; ///< Which page the first of m_pages is.
    std::size_t m_bytes = 0;   ///< Of m_pages.
    std::size_t m_burst = 0;
    bool m_ended = false;
    std::string m_name = "Tulplayer";
};

} // namespace bass
