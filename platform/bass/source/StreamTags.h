#pragma once

#include <string>

namespace bass {

/// What a stream says of itself, as the bytes that were sent; empty where it says nothing.
struct StreamTags {
    std::string headers;  ///< Lines "icy-name: NAME" and so on of the server's answer.
    std::string metadata; ///< The last packet of ICY metadata: "StreamTitle='TITLE';" and so on.
    std::string comments; ///< Of the container: "TITLE=", "ARTIST=", "ALBUM=", each ended by a NUL.

    bool operator==(const StreamTags&) const = default;
};

} // namespace bass
