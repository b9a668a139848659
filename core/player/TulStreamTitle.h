#pragma once

#include <string>
#include <string_view>

/// The texts that a radio stream sends of itself and of what it plays: one line of UTF-8 of limited length
/// each, empty when not sent.
struct TulStreamTitle {
    std::string station;
    std::string title;
    std::string artist;
    std::string album;

    bool operator==(const TulStreamTitle&) const = default;
};

/// Parses the results of BASS_ChannelGetTags for BASS_TAG_ICY, BASS_TAG_META and BASS_TAG_OGG, which hold
/// arbitrary bytes of a server. Comments take precedence over ICY metadata, whose title holds the artist as
/// well.
[[nodiscard]] TulStreamTitle parseStreamTitle(std::string_view icyHeaders, std::string_view icyMetadata,
                                              std::string_view comments);
