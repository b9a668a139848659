#pragma once

#include <string>
#include <string_view>

namespace bass {

/// Appends a comment in the form of StreamTags::comments, if it is one of those that are shown and not too
/// long.
void addComment(std::string& comments, std::string_view key, std::string_view value);

/// The comments of a Vorbis comment block (vendor length and vendor, count, then length and text of each
/// comment, little endian), in that form. Of a damaged block those before the damage.
[[nodiscard]] std::string readComments(std::string_view block);

} // namespace bass
