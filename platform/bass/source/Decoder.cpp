#include "platform/bass/source/Decoder.h"

#include "platform/bass/source/OggComments.h"

#include <algorithm>
#include <cmath>
#include <string_view>

namespace bass {
namespace {

using Status = ReadResult::Status;

constexpr int minRate = 1000;
constexpr int maxRate = 6'144'000;
constexpr int maxChannels = 64;
/// After this many packets without sound the stream counts as empty.
constexpr int maxSilentPackets = 4096;

bool isSane(const AVFrame& frame) {
    return frame.sample_rate >= minRate && frame.sample_rate <= maxRate && frame.nb_samples > 0 &&
           frame.ch_layout.nb_channels >= 1 && frame.ch_layout.nb_channels <= maxChannels;
}

std::string_view bytesOf(const AVPacket& packet) {
    return {reinterpret_cast<const char*>(packet.data), static_cast<std::size_t>(packet.size)};
}

/// Each link of a chained stream starts with headers, which FFmpeg returns as packets.
bool isOpusHeader(const AVPacket& packet) {
    return bytesOf(packet).starts_with("OpusHead") || bytesOf(packet).starts_with("OpusTags");
}

/// The comments in a header packet; none in other packets.
std::optional<std::string> commentsIn(const AVPacket& packet, AVCodecID codec) {
    constexpr std::string_view opusTags = "OpusTags";
    constexpr int flacComments = 4; // the type of a metadata block; a frame of sound starts with 0xFF
    const std::string_view bytes = bytesOf(packet);
    if (codec == AV_CODEC_ID_OPUS && bytes.starts_with(opusTags))
        return readComments(bytes.substr(opusTags.size()));
    if (codec == AV_CODEC_ID_FLAC && bytes.size() > 4 && (bytes[0] & 0x7f) == flacComments)
        return readComments(bytes.substr(4)); // after type and length
    return std::nullopt;
}

} // namespace

std::unique_ptr<Decoder> Decoder::open(ByteSource& bytes, Format format) {
    std::unique_ptr<Decoder> decoder(new Decoder(bytes, format));
    decoder->m_packet.reset(av_packet_alloc());
    decoder->m_frame.reset(av_frame_alloc());
    decoder->m_demuxer = Demuxer::open(bytes, format);
    if (!decoder->m_packet || !decoder->m_frame || !decoder->m_demuxer || !decoder->openCodec())
        return nullptr;

    // The first frame has the actual format; headers may be wrong.
    if (decoder->fetch() != Status::more) return nullptr;
    decoder->m_rate = decoder->m_frame->sample_rate;
    // opusenc rounds up when it resamples to 48 kHz: rounding down restores the original number of frames.
    if (decoder->m_codec->codec_id == AV_CODEC_ID_OPUS) decoder->m_rounding = AV_ROUND_DOWN;
    decoder->m_firstByte = decoder->m_frame->pkt_pos;
    decoder->m_origin = decoder->timeOfFrame().value_or(0);
    decoder->m_position = 0;
    decoder->m_length = decoder->m_demuxer->length(decoder->m_rate);
    decoder->m_replayGain = decoder->m_demuxer->replayGain();
    decoder->m_cutAtLength = decoder->m_demuxer->hasPaddingPastLength();
    decoder->takeOverTrimming();
    return decoder;
}

/// FFmpeg trims the padding by packet times. Where these are unreliable, cut at the known length instead.
void Decoder::takeOverTrimming() {
    // A Vorbis stream in a single Ogg page: FFmpeg counts the first packet, which yields no sound.
    const bool isOnePage = m_codec->codec_id == AV_CODEC_ID_VORBIS && m_demuxer->is("ogg") && m_origin > 0;
    // A seek by byte offset yields an estimated time.
    const bool guesses = m_demuxer->hasConstantBitRate();
    if (!m_length || (!isOnePage && !guesses)) return;
    m_codec->flags2 |= AV_CODEC_FLAG2_SKIP_MANUAL;
    m_cutAtLength = true;
}

bool Decoder::openCodec() {
    const AVStream& stream = m_demuxer->stream();
    const AVCodec* codec = avcodec_find_decoder(stream.codecpar->codec_id);
    if (!codec) return false;
    m_codec.reset(avcodec_alloc_context3(codec));
    if (!m_codec || avcodec_parameters_to_context(m_codec.get(), stream.codecpar) < 0) return false;
    if (codec->id == AV_CODEC_ID_FLAC && m_codec->extradata_size > 0)
        m_flac =
            flac::parseStreamInfo({m_codec->extradata, static_cast<std::size_t>(m_codec->extradata_size)});
    m_codec->pkt_timebase = stream.time_base;
    m_codec->thread_count = 1;
    return avcodec_open2(m_codec.get(), codec, nullptr) >= 0;
}

Status Decoder::next(Sound& sound) {
    while (!m_ended) {
        if (!m_fetched) {
            if (const Status status = fetch(); status != Status::more) {
                m_ended = status != Status::cancelled;
                return status;
            }
        }
        m_fetched = false;
        if (!m_position) m_position = m_playedFrom;
        std::int64_t from = *m_position;
        std::int64_t to = from + m_frame->nb_samples;
        m_nextPosition = to;
        if (m_length && m_cutAtLength) to = std::min(to, *m_length);
        from = std::max(from, m_playedFrom);
        if (from >= to) continue;
        sound = {m_frame.get(), static_cast<int>(from - *m_position), static_cast<int>(to - from)};
        return Status::more;
    }
    return Status::end;
}

/// Decodes the next frame into `m_frame` and sets its position if known.
Status Decoder::fetch() {
    for (int silent = 0; silent < maxSilentPackets; ++silent) {
        const int result = avcodec_receive_frame(m_codec.get(), m_frame.get());
        if (result == AVERROR_EOF) return Status::end;
        if (result == AVERROR(EAGAIN)) {
            if (const Status status = feed(); status != Status::more) return status;
            continue;
        }
        if (result < 0 || !isSane(*m_frame)) continue;
        if (m_position)
            m_position = m_nextPosition;
        else if (const auto time = timeOfFrame(); m_rate > 0 && time)
            m_position = *time - m_origin;
        m_fetched = true;
        return Status::more;
    }
    return Status::end;
}

/// The time of `m_frame` from the most reliable source; none when unknown.
std::optional<std::int64_t> Decoder::timeOfFrame() const {
    if (m_flacTime) return m_flacTime;
    if (m_demuxer->hasConstantBitRate() && m_frame->pkt_pos >= 0 && m_firstByte >= 0 &&
        m_codec->frame_size > 0 && m_codec->bit_rate > 0) {
        const double packetBytes = static_cast<double>(m_codec->frame_size) *
                                   static_cast<double>(m_codec->bit_rate) / 8 / m_frame->sample_rate;
        const auto packets = std::llround(static_cast<double>(m_frame->pkt_pos - m_firstByte) / packetBytes);
        const int trimmed =
            m_codec->frame_size - m_frame->nb_samples; // encoder delay, trimmed from the front
        return packets * m_codec->frame_size + trimmed;
    }
    if (m_frame->pts == AV_NOPTS_VALUE) return std::nullopt;
    return av_rescale_q(m_frame->pts, m_demuxer->stream().time_base, {1, m_frame->sample_rate});
}

Status Decoder::feed() {
    if (m_bytes.cancel()->requested()) return Status::cancelled;
    const int result = m_demuxer->next(*m_packet);
    if (m_bytes.interrupted()) {
        m_lostItsPlace = true; // the demuxer may have dropped an incomplete packet
        return Status::cancelled;
    }
    if (m_flac && result >= 0)
        m_flacTime = flac::firstSample({m_packet->data, static_cast<std::size_t>(m_packet->size)}, *m_flac);
    if (result == AVERROR(EIO)) return Status::failed;
    if (result == AVERROR(EAGAIN)) return Status::more;
    if (auto comments = m_demuxer->takeComments()) m_comments = std::move(comments);
    if (result >= 0)
        if (auto comments = commentsIn(*m_packet, m_codec->codec_id)) m_comments = std::move(comments);
    // Damaged data ends the stream: what was decoded before is still played.
    if (result < 0) return avcodec_send_packet(m_codec.get(), nullptr) < 0 ? Status::end : Status::more;
    if (m_codec->codec_id == AV_CODEC_ID_OPUS && isOpusHeader(*m_packet)) {
        avcodec_flush_buffers(m_codec.get()); // a new link does not continue the previous one
        return Status::more;
    }
    avcodec_send_packet(m_codec.get(), m_packet.get()); // a damaged packet is skipped
    return Status::more;
}

/// Frames to decode before the target of a seek, for overlap, bit reservoir and filters.
std::int64_t Decoder::preroll() const {
    const AVCodecDescriptor* descriptor = avcodec_descriptor_get(m_codec->codec_id);
    const bool isLossless = descriptor && (descriptor->props & AV_CODEC_PROP_LOSSLESS);
    return isLossless ? 0 : m_rate * 3 / 10;
}

bool Decoder::seek(std::int64_t frame) {
    if (!m_bytes.seekable()) return false;
    frame = std::max<std::int64_t>(frame, 0);
    if (m_length) frame = std::min(frame, *m_length);
    // Without an index a seek may land too late: retry from an earlier position.
    if (m_codec)
        for (const std::int64_t seconds : {0, 1, 10})
            if (seekWithin(frame, preroll() + seconds * m_rate)) return true;
    if (m_bytes.cancel()->requested()) return false;
    m_playedFrom = frame;
    m_ended = !restart(); // a file that was truncated meanwhile cannot be reopened
    return !m_ended;
}

bool Decoder::seekWithin(std::int64_t frame, std::int64_t margin) {
    const AVRational timeBase = m_demuxer->stream().time_base;
    const std::int64_t from = std::max<std::int64_t>(frame - margin, 0);
    if (!m_demuxer->seek(av_rescale_q(m_origin + from, {1, m_rate}, timeBase))) return false;
    avcodec_flush_buffers(m_codec.get());
    m_playedFrom = frame;
    m_position.reset();
    m_fetched = false;
    m_ended = false;
    m_lostItsPlace = false;
    if (fetch() != Status::more || !m_position) return false;
    if (!m_flacTime && m_demuxer->guessesTimeAt(m_frame->pkt_pos)) return false;
    return *m_position <= std::max<std::int64_t>(frame - preroll(), 0);
}

bool Decoder::restart() {
    m_codec.reset();
    m_demuxer.reset();
    m_lostItsPlace = false;
    if (m_bytes.seek(0) != 0) return false;
    m_demuxer = Demuxer::open(m_bytes, m_format);
    if (!m_demuxer || !openCodec()) {
        m_codec.reset();
        return false;
    }
    m_position = m_nextPosition = 0;
    if (fetch() != Status::more) return false;
    takeOverTrimming();
    return true;
}

} // namespace bass
