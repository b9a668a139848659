#include "platform/bass/SpscRing.h"

#include <gtest/gtest.h>

#include <array>
#include <numeric>
#include <thread>
#include <vector>

namespace {

using bass::SpscRing;

/// What is read next, up to `count` elements.
std::vector<int> take(SpscRing<int>& ring, std::size_t count) {
    std::vector<int> taken;
    const std::size_t there = std::min(count, ring.readable());
    for (const auto& run : ring.peek(there))
        taken.insert(taken.end(), run.begin(), run.end());
    ring.consume(there);
    return taken;
}

TEST(SpscRingTest, TwoThreadsKeepTheSequence) {
    constexpr int count = 300'000;
    SpscRing<int> ring(100, 28);
    std::jthread writer([&ring] {
        std::array<int, 37> chunk;
        for (int next = 0; next < count;) {
            std::iota(chunk.begin(), chunk.end(), next);
            const auto left = static_cast<std::size_t>(count - next);
            next += static_cast<int>(ring.write(std::span(chunk).first(std::min(chunk.size(), left))));
        }
    });
    int expected = 0;
    while (expected < count)
        for (const int value : take(ring, 53))
            ASSERT_EQ(value, expected++);
    EXPECT_EQ(ring.readable(), 0U);
}

TEST(SpscRingTest, ReadElementsCanBeReadAgainAndCopied) {
    SpscRing<int> ring(8, 4);
    const std::array<int, 12> numbers{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12};
    EXPECT_EQ(ring.write(numbers), 8U) << "no more than the capacity";
    EXPECT_EQ(take(ring, 3), (std::vector<int>{1, 2, 3}));
    EXPECT_EQ(ring.rewind(9), 3U) << "no further than the first element";
    EXPECT_EQ(ring.writable(), 0U);
    EXPECT_EQ(take(ring, 7), (std::vector<int>{1, 2, 3, 4, 5, 6, 7}));
    EXPECT_EQ(ring.write(std::span(numbers).subspan(8)), 4U) << "over the edge";

    std::array<int, 6> history;
    ring.copyHistory(1, history);
    EXPECT_EQ(history, (std::array<int, 6>{0, 0, 0, 4, 5, 6})) << "silence where nothing is kept";
    EXPECT_EQ(ring.rewind(9), 4U) << "no further than the history";
    EXPECT_EQ(take(ring, 99), (std::vector<int>{4, 5, 6, 7, 8, 9, 10, 11, 12}));
    ring.clear();
    EXPECT_EQ(ring.rewind(1), 0U);
    ring.copyHistory(0, history);
    EXPECT_EQ(history, (std::array<int, 6>{})) << "from before it was cleared";
}

} // namespace
