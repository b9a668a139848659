#pragma once

#include "platform/bass/source/Demuxer.h"
#include "platform/bass/source/FlacHeader.h"

#include <memory>
#include <optional>

namespace bass {

/// Decoded sound at its own rate and layout, its frames counted from the first one that is heard.
class Decoder {
public:
    /// A part of a decoded frame, valid until the decoder's next call.
    struct Sound {
        const AVFrame* frame = nullptr;
        int offset = 0; ///< first frame to be heard within `frame`
        int count = 0;
    };

    /// Null when `bytes`, which must outlive the decoder, hold no sound of `format` that can be decoded.
    [[nodiscard]] static std::unique_ptr<Decoder> open(ByteSource& bytes, Format format);

    /// `more` with sound, `end` or `failed` without.
    [[nodiscard]] ReadResult::Status next(Sound& sound);
    [[nodiscard]] bool seek(std::int64_t frame);
    [[nodiscard]] int rate() const { return rate_; }
    /// How a count of frames is brought to another rate.
    [[nodiscard]] AVRounding rounding() const { return rounding_; }
    /// Frames at `rate`; none when the container does not know.
    [[nodiscard]] std::optional<std::int64_t> length() const { return length_; }

private:
    Decoder(ByteSource& bytes, Format format) : bytes_(bytes), format_(format) {}
    [[nodiscard]] bool openCodec();
    void takeOverTrimming();
    [[nodiscard]] bool restart();
    [[nodiscard]] bool seekWithin(std::int64_t frame, std::int64_t margin);
    [[nodiscard]] ReadResult::Status fetch();
    [[nodiscard]] ReadResult::Status feed();
    [[nodiscard]] std::optional<std::int64_t> timeOfFrame() const;
    [[nodiscard]] std::int64_t preroll() const;

    ByteSource& bytes_;
    Format format_;
    std::unique_ptr<Demuxer> demuxer_;
    CodecContextPtr codec_; ///< null, as `demuxer_`, once the sound could not be opened again
    PacketPtr packet_;
    FramePtr frame_;
    int rate_ = 0; ///< fixed at opening, as the next two: any thread may ask
    AVRounding rounding_ = AV_ROUND_NEAR_INF;
    std::optional<std::int64_t> length_;
    std::optional<flac::StreamInfo> flac_; ///< of a FLAC stream
    std::optional<std::int64_t> flacTime_; ///< what the packet sent last says of itself
    std::int64_t firstByte_ = 0;           ///< where the packet of the first frame lies
    std::int64_t origin_ = 0;              ///< time of the first heard frame, in frames
    std::optional<std::int64_t> position_; ///< of the frame fetched last; none until a time is known
    std::int64_t nextPosition_ = 0;
    std::int64_t heardFrom_ = 0; ///< what lies before is decoded but not heard
    bool cutAtLength_ = false;   ///< sound past `length_` is padding
    bool fetched_ = false;       ///< `frame_` waits to be handed out
    bool ended_ = false;
};

} // namespace bass
