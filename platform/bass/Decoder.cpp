#include "platform/bass/Decoder.h"

#include <algorithm>

namespace bass {
namespace {

using Status = ReadResult::Status;

constexpr int lowestRate = 1000;
constexpr int highestRate = 6'144'000;
constexpr int mostChannels = 64;
/// So many packets without any sound are taken for a stream that holds none.
constexpr int mostSilentPackets = 4096;

bool isSane(const AVFrame& frame) {
    return frame.sample_rate >= lowestRate && frame.sample_rate <= highestRate && frame.nb_samples > 0 &&
           frame.ch_layout.nb_channels >= 1 && frame.ch_layout.nb_channels <= mostChannels;
}

} // namespace

std::unique_ptr<Decoder> Decoder::open(ByteSource& bytes, Format format) {
    std::unique_ptr<Decoder> decoder(new Decoder(bytes, format));
    decoder->packet_.reset(av_packet_alloc());
    decoder->frame_.reset(av_frame_alloc());
    decoder->demuxer_ = Demuxer::open(bytes, format);
    if (!decoder->packet_ || !decoder->frame_ || !decoder->demuxer_ || !decoder->openCodec()) return nullptr;

    // The first frame tells what headers only promise.
    if (decoder->fetch() != Status::more) return nullptr;
    decoder->rate_ = decoder->frame_->sample_rate;
    const AVRational timeBase = decoder->demuxer_->stream().time_base;
    if (decoder->frame_->pts != AV_NOPTS_VALUE)
        decoder->origin_ = av_rescale_q(decoder->frame_->pts, timeBase, {1, decoder->rate_});
    decoder->position_ = 0;
    decoder->length_ = decoder->demuxer_->length(decoder->rate_);
    decoder->cutAtLength_ = decoder->demuxer_->hasPaddingPastLength();
    decoder->correctOnePageVorbis();
    return decoder;
}

/// Where all of a Vorbis stream lies in one Ogg page, FFmpeg counts the first packet, which has no sound of
/// its own, and cuts that much of the end.
void Decoder::correctOnePageVorbis() {
    if (codec_->codec_id != AV_CODEC_ID_VORBIS || !demuxer_->is("ogg") || origin_ <= 0 || !length_) return;
    codec_->flags2 |= AV_CODEC_FLAG2_SKIP_MANUAL;
    cutAtLength_ = true;
}

bool Decoder::openCodec() {
    const AVStream& stream = demuxer_->stream();
    const AVCodec* codec = avcodec_find_decoder(stream.codecpar->codec_id);
    if (!codec) return false;
    codec_.reset(avcodec_alloc_context3(codec));
    if (!codec_ || avcodec_parameters_to_context(codec_.get(), stream.codecpar) < 0) return false;
    codec_->pkt_timebase = stream.time_base;
    codec_->thread_count = 1;
    return avcodec_open2(codec_.get(), codec, nullptr) >= 0;
}

Status Decoder::next(Sound& sound) {
    while (!ended_) {
        if (!fetched_) {
            if (const Status status = fetch(); status != Status::more) {
                ended_ = true;
                return status;
            }
        }
        fetched_ = false;
        if (!position_) position_ = heardFrom_;
        std::int64_t from = *position_;
        std::int64_t to = from + frame_->nb_samples;
        nextPosition_ = to;
        if (length_ && cutAtLength_) to = std::min(to, *length_);
        from = std::max(from, heardFrom_);
        if (from >= to) continue;
        sound = {frame_.get(), static_cast<int>(from - *position_), static_cast<int>(to - from)};
        return Status::more;
    }
    return Status::end;
}

/// Decodes the next frame into `frame_` and sets its position where it is known.
Status Decoder::fetch() {
    for (int silent = 0; silent < mostSilentPackets; ++silent) {
        const int result = avcodec_receive_frame(codec_.get(), frame_.get());
        if (result == AVERROR_EOF) return Status::end;
        if (result == AVERROR(EAGAIN)) {
            if (const Status status = feed(); status != Status::more) return status;
            continue;
        }
        if (result < 0 || !isSane(*frame_)) continue;
        if (position_)
            position_ = nextPosition_;
        else if (rate_ > 0 && frame_->pts != AV_NOPTS_VALUE)
            position_ = av_rescale_q(frame_->pts, demuxer_->stream().time_base, {1, rate_}) - origin_;
        fetched_ = true;
        return Status::more;
    }
    return Status::end;
}

Status Decoder::feed() {
    const int result = demuxer_->next(*packet_);
    if (bytes_.interrupted() || result == AVERROR(EIO)) return Status::failed;
    // Damage ends the sound like its end does: what was decoded until here is still heard.
    if (result < 0) return avcodec_send_packet(codec_.get(), nullptr) < 0 ? Status::end : Status::more;
    avcodec_send_packet(codec_.get(), packet_.get()); // a damaged packet is left out
    return Status::more;
}

/// How much must be decoded before a frame for it to come out right: overlap, bit reservoir, filters.
std::int64_t Decoder::preroll() const {
    const AVCodecDescriptor* descriptor = avcodec_descriptor_get(codec_->codec_id);
    const bool isLossless = descriptor && (descriptor->props & AV_CODEC_PROP_LOSSLESS);
    return isLossless ? 0 : rate_ * 3 / 10;
}

bool Decoder::seek(std::int64_t frame) {
    if (!bytes_.seekable()) return false;
    frame = std::max<std::int64_t>(frame, 0);
    if (length_) frame = std::min(frame, *length_);
    // Containers without an index land where they guess; too late is seen and tried again from earlier.
    for (const std::int64_t seconds : {0, 1, 10})
        if (seekWithin(frame, preroll() + seconds * rate_)) return true;
    heardFrom_ = frame;
    return restart();
}

bool Decoder::seekWithin(std::int64_t frame, std::int64_t margin) {
    const AVRational timeBase = demuxer_->stream().time_base;
    const std::int64_t from = std::max<std::int64_t>(frame - margin, 0);
    if (!demuxer_->seek(av_rescale_q(origin_ + from, {1, rate_}, timeBase))) return false;
    avcodec_flush_buffers(codec_.get());
    heardFrom_ = frame;
    position_.reset();
    fetched_ = false;
    ended_ = false;
    if (fetch() != Status::more || !position_) return false;
    return *position_ <= std::max<std::int64_t>(frame - preroll(), 0);
}

bool Decoder::restart() {
    codec_.reset();
    demuxer_.reset();
    if (bytes_.seek(0) != 0) return false;
    demuxer_ = Demuxer::open(bytes_, format_);
    if (!demuxer_ || !openCodec()) return false;
    fetched_ = false;
    ended_ = false;
    position_ = nextPosition_ = 0;
    return true;
}

} // namespace bass
