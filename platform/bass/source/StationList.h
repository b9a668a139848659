#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

/// The short playlists (m3u, pls) that radio stations publish in the place of the stream itself.
namespace bass {

/// Bytes that isStationList needs, and the most that are read of one.
inline constexpr std::size_t stationListHeadBytes = 10;
inline constexpr std::size_t maxStationListBytes = std::size_t{64} * 1024;

/// Whether bytes that begin with `head` are text that may be such a list: no audio begins so.
[[nodiscard]] bool isStationList(std::string_view head);
/// The first http or https address that the list names; none in a list of segments (HLS).
[[nodiscard]] std::optional<std::string> firstAddress(std::string_view list);

} // namespace bass
