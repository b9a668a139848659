// Feeds arbitrary encoder output to OggPageReader. The first byte selects the size of the blocks.
#include "platform/bass/sharing/OggPageReader.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace {

constexpr std::size_t headSize = 27; // without the lacing values: RFC 3533, 6
constexpr std::size_t maxPageBytes = 65307;

/// Corrects the checksums, so that inputs get past the first check.
void mendChecksums(std::vector<unsigned char>& stream) {
    for (std::size_t at = 0; at + headSize <= stream.size(); ++at) {
        if (std::memcmp(&stream[at], "OggS", 4) != 0) continue;
        const std::size_t head = headSize + stream[at + headSize - 1];
        if (at + head > stream.size()) continue;
        std::size_t body = 0;
        for (std::size_t i = headSize; i < head; ++i)
            body += stream[at + i];
        if (at + head + body > stream.size()) continue;
        ogg_page page{&stream[at], static_cast<long>(head), &stream[at] + head, static_cast<long>(body)};
        ogg_page_checksum_set(&page);
        at += head + body - 1;
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    if (size < 1) return 0;
    const std::size_t step = 1 + data[0] * 37U;
    std::vector<unsigned char> stream(data + 1, data + size);
    mendChecksums(stream);

    std::size_t given = 0;
    bass::OggPageReader reader([&](const bass::OggPageReader::Page& page) {
        const std::size_t bytes = page.bytes.size();
        if (bytes < headSize || bytes > maxPageBytes) std::abort();
        if (std::memcmp(page.bytes.data(), "OggS", 4) != 0) std::abort();
        given += bytes;
    });
    auto rest = std::as_bytes(std::span(stream));
    while (!rest.empty()) {
        const std::size_t count = std::min(rest.size(), step);
        if (!reader.read(rest.first(count))) break;
        rest = rest.subspan(count);
    }
    if (given > stream.size()) std::abort();
    return 0;
}
