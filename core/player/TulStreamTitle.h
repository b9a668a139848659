#pragma once

#include <string>
#include <string_view>

/// What a radio stream says of itself and of what it plays. Texts are UTF-8 of one line and of bounded
/// length; empty where nothing is said.
struct TulStreamTitle {
    std::string station;
    std::string title;
    std::string artist;
    std::string album;

    bool operator==(const TulStreamTitle&) const = default;
};

/// From what BASS_ChannelGetTags answers for BASS_TAG_ICY, BASS_TAG_META and BASS_TAG_OGG, which hold
/// whatever a server sends. Comments precede ICY metadata, whose title holds the artist as well.
[[nodiscard]] TulStreamTitle parseStreamTitle(std::string_view icyHeaders, std::string_view icyMetadata,
                                              std::string_view comments);
