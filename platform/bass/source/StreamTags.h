#pragma once

#include <string>

namespace bass {

/// The tags of a stream, as the bytes that were sent; empty when missing.
struct StreamTags {
    std::string headers;  ///< ICY headers of the response: lines like "icy-name: NAME".
    std::string metadata; ///< The last packet of ICY metadata, like "StreamTitle='TITLE';".
    std::string
        comments; ///< Comments of the container: "TITLE=", "ARTIST=", "ALBUM=", each terminated by a NUL.

    bool operator==(const StreamTags&) const = default;
};

} // namespace bass
