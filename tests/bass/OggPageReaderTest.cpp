#include "platform/bass/sharing/OggPageReader.h"
#include "tests/support/Media.h"

#include <cstring>
#include <gtest/gtest.h>
#include <random>

namespace {

using bass::OggPageReader;

std::vector<std::byte> encoded() {
    static const std::vector<std::byte> stream = [] {
        const std::string bytes =
            support::readFile(support::encode("a.ogg", support::noise(44100 * 3), 44100, 2,
                                              {"oggenc", "-Q", "-M", "160", "-m", "160", "-o", "OUT", "IN"}));
        const auto span = std::as_bytes(std::span(bytes));
        return std::vector<std::byte>(span.begin(), span.end());
    }();
    return stream;
}

struct Result {
    std::vector<OggPageReader::Page> pages;
    bool goesOn = true;
};

Result readInSteps(std::span<const std::byte> bytes, std::size_t step) {
    Result result;
    OggPageReader reader([&](OggPageReader::Page page) { result.pages.push_back(std::move(page)); });
    while (!bytes.empty() && result.goesOn) {
        const std::size_t count = std::min(step, bytes.size());
        result.goesOn = reader.read(bytes.first(count));
        bytes = bytes.subspan(count);
    }
    EXPECT_EQ(reader.bitsPerSecond(), result.pages.empty() ? 0 : 160000);
    return result;
}

std::vector<std::byte> joined(const Result& result) {
    std::vector<std::byte> all;
    for (const auto& page : result.pages)
        all.insert(all.end(), page.bytes.begin(), page.bytes.end());
    return all;
}

TEST(OggPageReaderTest, SplitsAStreamIntoPagesForAnyBlockSize) {
    for (const std::size_t step : {std::size_t{1}, std::size_t{4096}, encoded().size()}) {
        const Result result = readInSteps(encoded(), step);
        EXPECT_FALSE(result.goesOn) << "the last page says so";
        EXPECT_EQ(joined(result), encoded());
        ASSERT_GT(result.pages.size(), 5U);
        EXPECT_TRUE(result.pages[0].isHeader);
        EXPECT_TRUE(result.pages[1].isHeader);
        EXPECT_FALSE(result.pages[2].isHeader);
    }
}

TEST(OggPageReaderTest, SkipsBrokenPagesAndGarbage) {
    const Result whole = readInSteps(encoded(), 4096);
    std::vector<std::byte> stream(1000, std::byte{'O'});
    for (std::size_t i = 0; i < whole.pages.size(); ++i) {
        std::vector<std::byte> page = whole.pages[i].bytes;
        if (i == 3) page[100] ^= std::byte{1};
        stream.insert(stream.end(), page.begin(), page.end());
        stream.insert(stream.end(), 100000, std::byte{'g'});
    }
    EXPECT_EQ(readInSteps(stream, 777).pages.size(), whole.pages.size() - 1);
}

TEST(OggPageReaderTest, GivesUpOnHeadersThatNeverEnd) {
    const Result whole = readInSteps(encoded(), 4096);
    std::vector<std::byte> stream = whole.pages[0].bytes;
    // One packet that goes on from page to page: 255 lacing values of 255 each.
    std::vector<unsigned char> head(282, 255);
    std::memcpy(head.data(), whole.pages[0].bytes.data(), 27);
    head[5] = 1; // continued
    head[26] = 255;
    std::vector<unsigned char> body(65025, 'x');
    ogg_page page{head.data(), 282, body.data(), 65025};
    ogg_page_checksum_set(&page);
    for (int i = 0; i < 100; ++i) {
        const auto headBytes = std::as_bytes(std::span(head));
        const auto bodyBytes = std::as_bytes(std::span(body));
        stream.insert(stream.end(), headBytes.begin(), headBytes.end());
        stream.insert(stream.end(), bodyBytes.begin(), bodyBytes.end());
    }
    const Result result = readInSteps(stream, 4096);
    EXPECT_FALSE(result.goesOn);
    EXPECT_LT(joined(result).size(), 200000U);
}

TEST(OggPageReaderTest, SurvivesDamagedInput) {
    std::mt19937 random(1); // NOLINT: the same every time
    const auto any = [&](std::size_t below) { return static_cast<std::size_t>(random() % below); };
    const std::vector<std::byte> original = encoded();
    for (int round = 0; round < 500; ++round) {
        // Parts of it, from single bytes to whole pages, stand where others should, and its end is missing.
        std::vector<std::byte> stream = original;
        for (std::size_t edits = 1 + any(20); edits > 0; --edits) {
            const std::size_t from = any(original.size());
            const std::size_t count = any(std::min<std::size_t>(original.size() - from, 6000));
            std::copy_n(&original[from], count, &stream[any(original.size() - count)]);
        }
        stream.resize(stream.size() - any(10000));
        OggPageReader reader([](const OggPageReader::Page& page) { ASSERT_LE(page.bytes.size(), 65307U); });
        std::span<const std::byte> rest(stream);
        while (!rest.empty()) {
            const std::size_t count = std::min(rest.size(), 1 + any(9000));
            if (!reader.read(rest.first(count))) break;
            rest = rest.subspan(count);
        }
    }
}

} // namespace
