#pragma once

#include "platform/bass/source/HttpStream.h"
#include "platform/bass/source/Source.h"

#include <memory>
#include <optional>
#include <string>

namespace bass {

/// Opens an address, and reconnects a live stream when its connection drops or a link of a chained Ogg stream
/// ends, which leaves a discontinuity. A station's playlist (StationList) is replaced by the first address in
/// it; nested playlists are rejected. Files of known length are resumed by HttpStream.
class ReconnectingSource final : public Source {
public:
    /// `url` is trimmed, its scheme in lower case.
    [[nodiscard]] static OpenedSource open(const std::string& url, const NetworkLimits& limits,
                                           std::shared_ptr<Cancel> cancel);

    [[nodiscard]] ReadResult read(std::span<float> out) override;
    [[nodiscard]] bool seek(std::int64_t frame) override;
    [[nodiscard]] std::optional<std::int64_t> lengthFrames() const override { return m_length; }
    /// Only of files: a live stream's tags at its start belong to one of many tracks.
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
    StreamTags m_tags; ///< the last result of takeTags
    bool m_live = false;
    bool m_isListed = false;   ///< the address comes from a station's playlist
    std::int64_t m_frames = 0; ///< frames read since the last connection
    HttpStream::Clock::duration m_pause{0};
};

} // namespace bass
