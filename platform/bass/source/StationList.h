#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

/// The short playlists (m3u, pls) that radio stations publish instead of the stream's address.
namespace bass {

/// The bytes that isStationList needs, and the maximum that is read of a list.
inline constexpr std::size_t stationListHeadBytes = 10;
inline constexpr std::size_t maxStationListBytes = std::size_t{64} * 1024;

/// True when bytes that begin with `head` may be such a list. Audio never begins like that.
[[nodiscard]] bool isStationList(std::string_view head);
/// The first http or https address in the list; none in a list of segments (HLS).
[[nodiscard]] std::optional<std::string> firstAddress(std::string_view list);

} // namespace bass
