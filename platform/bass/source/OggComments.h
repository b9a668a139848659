#pragma once

#include <string>
#include <string_view>

namespace bass {

/// Keeps a comment in the form of StreamTags::comments if it is one of those that are shown and not absurdly
/// long.
void addComment(std::string& comments, std::string_view key, std::string_view value);

/// The comments of a Vorbis comment block (a length and a vendor, a count, lengths and comments, all little
/// endian), in that form. A damaged block gives those before the damage.
[[nodiscard]] std::string readComments(std::string_view block);

} // namespace bass
