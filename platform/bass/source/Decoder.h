#pragma once

#include "platform/bass/source/Demuxer.h"
#include "platform/bass/source/FlacHeader.h"

#include <memory>
#include <optional>
#include <string>
#include <utility>

namespace bass {

/// Decodes a stream at its own sample rate and layout. Frames are counted from the first one that is played.
class Decoder {
public:
    /// A part of a decoded frame, valid until the decoder's next call.
    struct Sound {
        const AVFrame* frame = nullptr;
        int offset = 0; ///< first frame to be played within `frame`
        int count = 0;
    };

    /// Null when `bytes` contain no decodable sound of `format`. `bytes` must outlive the decoder.
    [[nodiscard]] static std::unique_ptr<Decoder> open(ByteSource& bytes, Format format);

    /// Decodes the next part: `more` with `sound` set, any other status without.
    [[nodiscard]] ReadResult::Status next(Sound& sound);
    /// True when a cancelled call may have dropped data: a seek is needed before the next sound.
    [[nodiscard]] bool lostItsPlace() const { return m_lostItsPlace; }
    /// After a failed or cancelled seek the position is unknown.
    [[nodiscard]] bool seek(std::int64_t frame);
    [[nodiscard]] int rate() const { return m_rate; }
    /// How a number of frames is rounded when it is converted to another sample rate.
    [[nodiscard]] AVRounding rounding() const { return m_rounding; }
    /// Frames at `rate`; none when the container does not state it.
    [[nodiscard]] std::optional<std::int64_t> length() const { return m_length; }
    /// Read from the tags when the stream is opened.
    [[nodiscard]] const ReplayGain& replayGain() const { return m_replayGain; }
    /// The container's comments, in the form of StreamTags, if they have changed since the last call.
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
    CodecContextPtr m_codec; ///< null, as `m_demuxer`, after reopening has failed
    PacketPtr m_packet;
    FramePtr m_frame;
    int m_rate = 0; ///< constant after opening, as the next two
    AVRounding m_rounding = AV_ROUND_NEAR_INF;
    std::optional<std::int64_t> m_length;
    std::optional<flac::StreamInfo> m_flac; ///< of a FLAC stream
    std::optional<std::int64_t> m_flacTime; ///< position stated by the packet that was sent last
    std::int64_t m_firstByte = 0;           ///< byte offset of the first frame's packet
    std::int64_t m_origin = 0;              ///< time of the first played frame, in frames
    std::optional<std::int64_t>
        m_position; ///< position of the last decoded frame; none until a time is known
    std::int64_t m_nextPosition = 0;
    std::int64_t m_playedFrom = 0; ///< frames before it are decoded but not played
    bool m_cutAtLength = false;    ///< sound past `m_length` is padding
    bool m_fetched = false;        ///< `m_frame` holds a frame that was not taken yet
    bool m_ended = false;
    bool m_lostItsPlace = false;
    ReplayGain m_replayGain;
    std::optional<std::string> m_comments; ///< not taken yet
};

} // namespace bass
