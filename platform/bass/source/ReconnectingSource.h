#pragma once

#include "platform/bass/source/HttpStream.h"
#include "platform/bass/source/Source.h"

#include <memory>
#include <optional>
#include <string>

namespace bass {

/// An address as one endless sound: when the connection of a live stream drops, or one of its pieces (a link
/// of a chained Ogg stream) ends, it is connected and decoded anew. What was sent meanwhile is a
/// discontinuity. An address that sends a station's list (StationList) stands for the first one that is named
/// there; a list within a list is none. Files of a known length are resumed byte by byte below (HttpStream).
class ReconnectingSource final : public Source {
public:
    /// `url` is trimmed, its scheme in lower case.
    [[nodiscard]] static OpenedSource open(const std::string& url, const NetworkLimits& limits,
                                           std::shared_ptr<Cancel> cancel);

    [[nodiscard]] ReadResult read(std::span<float> out) override;
    [[nodiscard]] bool seek(std::int64_t frame) override;
    [[nodiscard]] std::optional<std::int64_t> lengthFrames() const override { return m_length; }
    /// Of a file alone: what a live stream says at its start is over with the track.
    [[nodiscard]] ReplayGain replayGain() const override { return m_replayGain; }
    [[nodiscard]] std::optional<StreamTags> takeTags() override;

private:
    ReconnectingSource(std::string url, const NetworkLimits& limits, std::shared_ptr<Cancel> cancel);
    [[nodiscard]] Failure openSource();
    [[nodiscard]] Failure connect();
    [[nodiscard]] Failure connectTo(std::string url);
    [[nodiscard]] bool reconnect();

    NetworkLimits m_limits;
    std::shared_ptr<Cancel> m_cancel;
    std::shared_ptr<HttpStream> m_http;
    std::unique_ptr<Source> m_source; ///< null while a live stream is not connected
    std::optional<std::int64_t> m_length;
    ReplayGain m_replayGain;
    StreamTags m_tags; ///< what takeTags answered last
    bool m_live = false;
    bool m_isListed = false;   ///< the address was named by a list
    std::int64_t m_frames = 0; ///< read since the last connection
    HttpStream::Clock::duration m_pause{0};
};

} // namespace bass
