#include "platform/bass/source/Decoder.h"

#include <algorithm>
#include <cmath>
#include <string_view>

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

/// Each link of a chained stream starts with headers, which FFmpeg hands out as if they were sound.
bool isOpusHeader(const AVPacket& packet) {
    const std::string_view bytes(reinterpret_cast<const char*>(packet.data),
                                 static_cast<std::size_t>(packet.size));
    return bytes.starts_with("OpusHead") || bytes.starts_with("OpusTags");
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
    // opusenc rounds up when it takes a source to 48 kHz: rounding down gives the source's count back.
    if (decoder->codec_->codec_id == AV_CODEC_ID_OPUS) decoder->rounding_ = AV_ROUND_DOWN;
    decoder->firstByte_ = decoder->frame_->pkt_pos;
    decoder->origin_ = decoder->timeOfFrame().value_or(0);
    decoder->position_ = 0;
    decoder->length_ = decoder->demuxer_->length(decoder->rate_);
    decoder->cutAtLength_ = decoder->demuxer_->hasPaddingPastLength();
    decoder->takeOverTrimming();
    return decoder;
}

/// FFmpeg trims by its packets' times. Where these are known to be wrong the end is cut at the length
/// instead.
void Decoder::takeOverTrimming() {
    // All of a Vorbis stream in one Ogg page: the first packet, which has no sound of its own, is counted
    // too.
    const bool isOnePage = codec_->codec_id == AV_CODEC_ID_VORBIS && demuxer_->is("ogg") && origin_ > 0;
    // A seek by byte offset guesses the time.
    const bool guesses = demuxer_->hasConstantBitRate();
    if (!length_ || (!isOnePage && !guesses)) return;
    codec_->flags2 |= AV_CODEC_FLAG2_SKIP_MANUAL;
    cutAtLength_ = true;
}

bool Decoder::openCodec() {
    const AVStream& stream = demuxer_->stream();
    const AVCodec* codec = avcodec_find_decoder(stream.codecpar->codec_id);
    if (!codec) return false;
    codec_.reset(avcodec_alloc_context3(codec));
    if (!codec_ || avcodec_parameters_to_context(codec_.get(), stream.codecpar) < 0) return false;
    if (codec->id == AV_CODEC_ID_FLAC && codec_->extradata_size > 0)
        flac_ = flac::parseStreamInfo({codec_->extradata, static_cast<std::size_t>(codec_->extradata_size)});
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
        else if (const auto time = timeOfFrame(); rate_ > 0 && time)
            position_ = *time - origin_;
        fetched_ = true;
        return Status::more;
    }
    return Status::end;
}

/// The time of `frame_` by the surest clock there is; none when there is none.
std::optional<std::int64_t> Decoder::timeOfFrame() const {
    if (flacTime_) return flacTime_;
    if (demuxer_->hasConstantBitRate() && frame_->pkt_pos >= 0 && firstByte_ >= 0 && codec_->frame_size > 0 &&
        codec_->bit_rate > 0) {
        const double packetBytes = static_cast<double>(codec_->frame_size) *
                                   static_cast<double>(codec_->bit_rate) / 8 / frame_->sample_rate;
        const auto packets = std::llround(static_cast<double>(frame_->pkt_pos - firstByte_) / packetBytes);
        const int trimmed = codec_->frame_size - frame_->nb_samples; // from the front, being encoder delay
        return packets * codec_->frame_size + trimmed;
    }
    if (frame_->pts == AV_NOPTS_VALUE) return std::nullopt;
    return av_rescale_q(frame_->pts, demuxer_->stream().time_base, {1, frame_->sample_rate});
}

Status Decoder::feed() {
    const int result = demuxer_->next(*packet_);
    if (flac_ && result >= 0)
        flacTime_ = flac::firstSample({packet_->data, static_cast<std::size_t>(packet_->size)}, *flac_);
    if (bytes_.interrupted() || result == AVERROR(EIO)) return Status::failed;
    if (result == AVERROR(EAGAIN)) return Status::more;
    // Damage ends the sound like its end does: what was decoded until here is still heard.
    if (result < 0) return avcodec_send_packet(codec_.get(), nullptr) < 0 ? Status::end : Status::more;
    if (codec_->codec_id == AV_CODEC_ID_OPUS && isOpusHeader(*packet_)) {
        avcodec_flush_buffers(codec_.get()); // what comes does not follow from what was
        return Status::more;
    }
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
    if (codec_)
        for (const std::int64_t seconds : {0, 1, 10})
            if (seekWithin(frame, preroll() + seconds * rate_)) return true;
    heardFrom_ = frame;
    ended_ = !restart(); // a file that was cut meanwhile cannot be opened again
    return !ended_;
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
    if (!flacTime_ && demuxer_->guessesTimeAt(frame_->pkt_pos)) return false;
    return *position_ <= std::max<std::int64_t>(frame - preroll(), 0);
}

bool Decoder::restart() {
    codec_.reset();
    demuxer_.reset();
    if (bytes_.seek(0) != 0) return false;
    demuxer_ = Demuxer::open(bytes_, format_);
    if (!demuxer_ || !openCodec()) {
        codec_.reset();
        return false;
    }
    position_ = nextPosition_ = 0;
    if (fetch() != Status::more) return false;
    takeOverTrimming();
    return true;
}

} // namespace bass
