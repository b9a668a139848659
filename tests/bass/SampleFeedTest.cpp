#include "platform/bass/sharing/SampleFeed.h"

#include <gtest/gtest.h>
#include <limits>
#include <memory>
#include <vector>

namespace {

using bass::SampleFeed;
using std::chrono::milliseconds;

class SampleFeedTest : public testing::Test {
protected:
    void tap(std::size_t frames, float value) {
        feed->tapped(std::vector<bass::Frame>(frames, {value, value}));
    }

    std::vector<std::int16_t> take(milliseconds at) {
        std::vector<std::int16_t> all;
        std::vector<std::int16_t> out(8192);
        while (const std::size_t frames = feed->take(out, start + at))
            all.insert(all.end(), out.begin(), out.begin() + static_cast<std::ptrdiff_t>(frames * 2));
        return all;
    }

    const SampleFeed::Clock::time_point start = SampleFeed::Clock::now();
    std::unique_ptr<SampleFeed> feed = std::make_unique<SampleFeed>(start);
};

TEST_F(SampleFeedTest, QuantisesWithDitherThatKeepsTheMean) {
    const float third = 100.3F / 32768;
    tap(100000, third);
    const auto out = take(milliseconds(0));
    ASSERT_EQ(out.size(), 200000U);
    double sum = 0;
    for (const std::int16_t sample : out) {
        ASSERT_NEAR(sample, 100.3, 1.6);
        sum += sample;
    }
    EXPECT_NEAR(sum / 200000, 100.3, 0.01);
}

TEST_F(SampleFeedTest, ClipsSamplesOutOfRange) {
    for (const auto& [sample, expected] :
         std::vector<std::pair<float, int>>{{2.0F, 32767},
                                            {-2.0F, -32768},
                                            {std::numeric_limits<float>::infinity(), 0},
                                            {std::numeric_limits<float>::quiet_NaN(), 0}}) {
        tap(10, sample);
        for (const std::int16_t out : take(milliseconds(0)))
            EXPECT_EQ(out, expected);
    }
}

TEST_F(SampleFeedTest, SendsSilenceInRealTimeWhileNothingPlays) {
    tap(4410, 0.5F);
    EXPECT_EQ(take(milliseconds(100)).size(), 4410U * 2);
    EXPECT_TRUE(take(milliseconds(690)).empty()) << "a device that has not asked again yet is no pause";
    EXPECT_EQ(take(milliseconds(1000)), std::vector<std::int16_t>(39690 * 2)) << "900 ms of silence";
    EXPECT_EQ(take(milliseconds(1040)).size(), 1764U * 2);
    tap(4410, 0.5F);
    EXPECT_EQ(take(milliseconds(1080)).size(), 4410U * 2) << "sound is taken at once";
    EXPECT_EQ(take(milliseconds(1700)).size(), static_cast<std::size_t>(74970 - 45864 - 4410) * 2)
        << "and the silence after it brings us back to the clock";
}

TEST_F(SampleFeedTest, FillsTheGapBeforeTheNextChannel) {
    tap(4410, 0.5F);
    feed->follow();
    tap(4410, -0.5F);
    const auto out = take(milliseconds(150));
    ASSERT_EQ(out.size(), static_cast<std::size_t>(4410 + 2205 + 4410) * 2);
    EXPECT_NEAR(out[4409 * 2], 16384, 2);
    EXPECT_EQ(out[4410 * 2], 0);
    EXPECT_EQ(out[6614 * 2], 0);
    EXPECT_NEAR(out[6615 * 2], -16384, 2);
}

TEST_F(SampleFeedTest, CountsDroppedFramesOfAStalledEncoderWithoutLag) {
    tap(441000, 0.5F);
    EXPECT_EQ(take(milliseconds(10000)).size(), 131072U * 2);
    EXPECT_EQ(feed->lostFrames(), 441000U - 131072U);
    EXPECT_EQ(take(milliseconds(10600)).size(), 26460U * 2) << "the silence of 600 ms, no more";
}

} // namespace
