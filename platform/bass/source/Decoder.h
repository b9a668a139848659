#pragma once

#include "platform/bass/source/Demuxer.h"
#include "platform/bass/source/FlacHeader.h"

#include <memory>
#include <optional>
#include <string>
#include <utility>

namespace bass {

/// Decoded sound at its own rate and layout, its frames counted from the first one that is played.
class Decoder {
public:
    /// A part of a decoded frame, valid until the decoder's next call.
    struct Sound {
        const AVFrame* frame = nullptr;
        int offset = 0; ///< first frame to be played within `frame`
        int count = 0;
    };

    /// Null when `bytes`, which must outlive the decoder, hold no sound of `format` that can be decoded.
    [[nodiscard]] static std::unique_ptr<Decoder> open(ByteSource& bytes, Format format);

    /// `more` with sound; any other status without.
    [[nodiscard]] ReadResult::Status next(Sound& sound);
    /// After `cancelled`: whether the next sound may not follow the last; a seek brings it back.
    [[nodiscard]] bool lostItsPlace() const { return m_lostItsPlace; }
    /// When it fails or is cancelled, it is not known where the next sound comes from.
    [[nodiscard]] bool seek(std::int64_t frame);
    [[nodiscard]] int rate() const { return m_rate; }
    /// How a count of frames is brought to another rate.
    [[nodiscard]] AVRounding rounding() const { return m_rounding; }
    /// Frames at `rate`; none when the container does not know.
    [[nodiscard]] std::optional<std::int64_t> length() const { return m_length; }
    /// What the tags said at opening.
    [[nodiscard]] const ReplayGain& replayGain() const { return m_replayGain; }
    /// What the container says of the sound, in the form of StreamTags, when that has changed since the last
    /// call.
    [[nodiscard]] std::optional<std::string> takeComments() {
        return std::exchange(m_comments, std::nullopt);
    }

private:
    Decoder(ByteSource& bytes, Format format) : m_bytes(bytes), m_format(format) {}
    [[nodiscard]] bool openCodec();
    void takeOverTrimming();
    [[nodiscard]] bool restart();
    [[nodiscard]] bool seekWithin(std::int64_t frame, std::int64_t margin);
    [[nodiscard]] ReadResult::Status fetch();
    [[nodiscard]] ReadResult::Status feed();
    [[nodiscard]] std::optional<std::int64_t> timeOfFrame() const;
    [[nodiscard]] std::int64_t preroll() const;

    ByteSource& m_bytes;
    Format m_format;
    std::unique_ptr<Demuxer> m_demuxer;
    CodecContextPtr m_codec; ///< null, as `m_demuxer`, once the sound could not be opened again
    PacketPtr m_packet;
    FramePtr m_frame;
    int m_rate = 0; ///< fixed at opening, as the next two: any thread may ask
    AVRounding m_rounding = AV_ROUND_NEAR_INF;
    std::optional<std::int64_t> m_length;
    std::optional<flac::StreamInfo> m_flac; ///< of a FLAC stream
    std::optional<std::int64_t> m_flacTime; ///< what the packet sent last says of itself
    std::int64_t m_firstByte = 0;           ///< where the packet of the first frame lies
    std::int64_t m_origin = 0;              ///< time of the first played frame, in frames
    std::optional<std::int64_t> m_position; ///< of the frame fetched last; none until a time is known
    std::int64_t m_nextPosition = 0;
    std::int64_t m_playedFrom = 0; ///< what lies before is decoded but not played
    bool m_cutAtLength = false;    ///< sound past `m_length` is padding
    bool m_fetched = false;        ///< `m_frame` waits to be taken
    bool m_ended = false;
    bool m_lostItsPlace = false;
    ReplayGain m_replayGain;
    std::optional<std::string> m_comments; ///< not taken yet
};

} // namespace bass
