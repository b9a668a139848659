#include "platform/bass/sharing/OggPageReader.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <utility>

namespace bass {

namespace {

constexpr int headerPacketCount = 3;
/// Every listener gets the headers: comments as large as this are not an encoder's.
constexpr std::size_t mostHeaderBytes = 131072;

// The identification header: Vorbis I, section 4.2.2.
constexpr std::size_t identificationSize = 30;
constexpr std::size_t nominalBitRateAt = 20;
constexpr char identificationMark[] = "\x01vorbis";

} // namespace

bool OggPageReader::read(std::span<const std::byte> bytes) {
    while (!bytes.empty() && !m_done) {
        const std::size_t count = std::min<std::size_t>(bytes.size(), 4096);
        char* to = ogg_sync_buffer(&m_sync, static_cast<long>(count));
        if (!to) return false;
        std::memcpy(to, bytes.data(), count);
        ogg_sync_wrote(&m_sync, static_cast<long>(count));
        bytes = bytes.subspan(count);

        ogg_page page;
        // -1 tells of bytes that were skipped.
        for (int found = 0; !m_done && (found = ogg_sync_pageout(&m_sync, &page)) != 0;)
            if (found > 0) m_done = !take(page);
    }
    return !m_done;
}

bool OggPageReader::take(const ogg_page& page) {
    if (!m_serial && !begin(page)) return true;
    if (ogg_page_serialno(&page) != *m_serial) return true;

    Page taken;
    taken.isHeader = m_headerPackets < headerPacketCount;
    const auto size = static_cast<std::size_t>(page.header_len + page.body_len);
    if (taken.isHeader) {
        m_headerPackets += ogg_page_packets(&page);
        m_headerBytes += size;
        if (m_headerBytes > mostHeaderBytes) return false;
    }
    taken.bytes.resize(size);
    std::memcpy(taken.bytes.data(), page.header, static_cast<std::size_t>(page.header_len));
    std::memcpy(taken.bytes.data() + page.header_len, page.body, static_cast<std::size_t>(page.body_len));
    m_receiver(std::move(taken));
    return ogg_page_eos(&page) == 0;
}

bool OggPageReader::begin(const ogg_page& page) {
    if (!ogg_page_bos(&page) || page.body_len != static_cast<long>(identificationSize)) return false;
    if (std::memcmp(page.body, identificationMark, sizeof(identificationMark) - 1) != 0) return false;
    std::uint32_t bits = 0;
    for (std::size_t i = 0; i < sizeof(bits); ++i)
        bits |= static_cast<std::uint32_t>(page.body[nominalBitRateAt + i]) << (8 * i);
    m_bitsPerSecond = static_cast<int>(std::min<std::uint32_t>(bits, INT32_MAX));
    m_serial = ogg_page_serialno(&page);
    return true;
}

} // namespace bass
