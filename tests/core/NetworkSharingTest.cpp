#include "core/player/TulNetworkSharing.h"
#include "core/player/TulStream.h"
#include "tests/core/RecordingBass.h"

#include <gtest/gtest.h>

namespace {

const std::string startCall = "./oggenc -r -R 44100 -M 160 -m 160 - 1 0 0\n";

class NetworkSharingTest : public testing::Test {
protected:
    NetworkSharingTest() {
        recording::bass = {};
        first.handle = 1;
        second.handle = 2;
    }
    ~NetworkSharingTest() override { first.handle = second.handle = 0; }

    static std::string calls() { return recording::bass.takeCalls(); }

    TulStream first;
    TulStream second;
    TulNetworkSharing sharing;
};

TEST_F(NetworkSharingTest, StartsOnceAndFollowsFromStreamToStream) {
    EXPECT_FALSE(sharing.isActive());
    EXPECT_EQ(sharing.start(first), 9090);
    EXPECT_EQ(calls(), "Encode_Start 1 " + startCall + "Encode_ServerInit 7 9090 40000 40000 0 0 0\n");
    EXPECT_TRUE(sharing.isActive());
    EXPECT_EQ(sharing.start(second), 9090);
    EXPECT_EQ(calls(), "Encode_SetChannel 7 2\n");
}

TEST_F(NetworkSharingTest, TriesAgainWithoutAProgramAndOnlyThen) {
    recording::bass.encodes = false;
    for (int track = 0; track < 2; ++track) {
        EXPECT_EQ(sharing.start(first), 0);
        EXPECT_EQ(calls(), "Encode_Start 1 " + startCall + "Encode_ServerInit 0 9090 40000 40000 0 0 0\n");
        EXPECT_FALSE(sharing.isActive());
    }
    recording::bass.encodes = true;
    recording::bass.serves = false;
    EXPECT_EQ(sharing.start(first), 0);
    calls();
    EXPECT_EQ(sharing.start(second), 0) << "a taken port is not asked for again";
    EXPECT_EQ(calls(), "Encode_SetChannel 7 2\n");
}

TEST_F(NetworkSharingTest, StartsAnewAfterAStopAndStopsWhenItGoes) {
    {
        TulNetworkSharing shortLived;
        shortLived.start(first);
        calls();
        shortLived.stop();
        EXPECT_FALSE(shortLived.isActive());
        EXPECT_EQ(shortLived.port, 0U);
        EXPECT_EQ(calls(), "Encode_Stop 7\n");
        EXPECT_EQ(shortLived.start(second), 9090);
        EXPECT_EQ(calls(), "Encode_Start 2 " + startCall + "Encode_ServerInit 7 9090 40000 40000 0 0 0\n");

        recording::bass.encoder = 0; // it has died
        shortLived.dropDeadEncoder();
        EXPECT_EQ(shortLived.port, 0U);
        EXPECT_EQ(shortLived.start(second), 9090);
        recording::bass.encoder = 0;
        calls();
        EXPECT_EQ(shortLived.start(first), 9090);
        EXPECT_EQ(calls(), "Encode_Stop 7\nEncode_Start 1 " + startCall +
                               "Encode_ServerInit 7 9090 40000 40000 0 0 0\n");
    }
    EXPECT_EQ(calls(), "Encode_Stop 7\n");
}

} // namespace
