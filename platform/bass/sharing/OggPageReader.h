#pragma once

#include <ogg/ogg.h>

#include <cstddef>
#include <functional>
#include <optional>
#include <span>
#include <vector>

namespace bass {

/// Cuts an encoder's output into the pages of its one Vorbis stream (RFC 3533). Bytes that are no page, pages
/// with a wrong checksum and pages of other streams are left out; what is held is never more than a page.
class OggPageReader {
public:
    struct Page {
        /// Of the pages that every listener needs before any other.
        bool isHeader = false;
        std::vector<std::byte> bytes;
    };
    using Receiver = std::function<void(Page)>;

    explicit OggPageReader(Receiver receiver) : m_receiver(std::move(receiver)) { ogg_sync_init(&m_sync); }
    ~OggPageReader() { ogg_sync_clear(&m_sync); }
    OggPageReader(const OggPageReader&) = delete;
    OggPageReader& operator=(const OggPageReader&) = delete;

    /// Calls the receiver for each page that is complete now. False when the stream has ended, or can't be
    /// one that listeners play: nothing more comes then.
    [[nodiscard]] bool read(std::span<const std::byte> bytes);

    /// The nominal bit rate that the stream tells; 0 while unknown.
    int bitsPerSecond() const { return m_bitsPerSecond; }

private:
    [[nodiscard]] bool take(const ogg_page& page);
    [[nodiscard]] bool begin(const ogg_page& page);

    Receiver m_receiver;
    ogg_sync_state m_sync{};
    std::optional<int> m_serial;
    int m_headerPackets = 0; ///< Of the three, those complete.
    std::size_t m_headerBytes = 0;
    int m_bitsPerSecond = 0;
    bool m_done = false;
};

} // namespace bass
