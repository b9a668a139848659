#include "platform/bass/source/Demuxer.h"

#include "platform/bass/source/FfmpegMemory.h"
#include "platform/bass/source/FlacHeader.h"
#include "platform/bass/source/GainTags.h"
#include "platform/bass/source/LameTag.h"
#include "platform/bass/source/OggComments.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <limits>
#include <string>
#include <string_view>
#include <utility>

extern "C" {
#include <libavutil/avstring.h>
}

namespace bass {
namespace {

/// Formats that open other files by name, or are detected by the file's name alone.
constexpr std::array<std::string_view, 11> refusedContainers = {
    "concat", "dash", "ffmetadata", "hls", "image2", "image2pipe", "imf", "rtp", "rtsp", "sdp", "tty"};

constexpr unsigned probeBytes = 1 << 20;
constexpr int maxStreams = 64;
constexpr int wavProbePackets = 4;
/// Limits of probing a live stream, which arrives no faster than it plays.
constexpr int liveProbeBytes = 128 * 1024;
constexpr std::int64_t liveProbeTime = AV_TIME_BASE;
/// Limit of the bytes read for one packet from a server, and for everything before the first (pictures,
/// sample tables).
constexpr std::int64_t maxBytesPerPacket = 16 << 20;
/// Lower for Ogg, whose demuxer holds several copies of the comments.
constexpr std::int64_t maxOggBytesPerPacket = 6 << 20;

bool isRefused(const AVInputFormat& format) {
    if (format.flags & AVFMT_NOFILE) return true;
    return std::ranges::any_of(refusedContainers, [&](auto name) { return name == format.name; });
}

int refuseToOpen(AVFormatContext*, AVIOContext**, const char*, int, AVDictionary**) {
    return AVERROR(EPERM);
}

int isInterrupted(void* opaque) {
    return static_cast<ByteSource*>(opaque)->interrupted();
}

/// True for codecs whose decoder needs no parameters from the container.
bool describesItself(AVCodecID codec) {
    return codec == AV_CODEC_ID_MP3 || codec == AV_CODEC_ID_MP2 || codec == AV_CODEC_ID_AAC;
}

bool isComplete(const AVStream& stream) {
    const AVCodecParameters& parameters = *stream.codecpar;
    if (parameters.codec_id == AV_CODEC_ID_NONE || parameters.codec_id == AV_CODEC_ID_PROBE) return false;
    return describesItself(parameters.codec_id) ||
           (parameters.sample_rate > 0 && parameters.ch_layout.nb_channels > 0);
}

} // namespace

std::unique_ptr<Demuxer> Demuxer::open(ByteSource& bytes, Format format) {
    const OpeningTime limited;
    std::unique_ptr<Demuxer> demuxer(new Demuxer(bytes));
    if (!demuxer->openContainer() || !demuxer->chooseStream() || !demuxer->isOf(format)) return nullptr;
    demuxer->measure();
    demuxer->readGain();
    return demuxer;
}

bool Demuxer::readFrom(std::int64_t offset) {
    if (m_bytes.seekable() && m_bytes.seek(offset) != offset) return false;
    m_avio = makeAvio(m_bytes);
    return m_avio != nullptr;
}

const AVInputFormat* Demuxer::probe() {
    if (!readFrom(0)) return nullptr;
    // Skip ID3v2 tags: one may be longer than any probe, and FFmpeg would keep its pictures.
    const std::int64_t tagsEnd =
        m_bytes.seekable() ? readId3Gain(*m_avio, m_bytes.seeksFast(), m_replayGain) : 0;
    if (tagsEnd > 0 && !readFrom(tagsEnd)) return nullptr;
    const AVInputFormat* format = nullptr;
    if (av_probe_input_buffer2(m_avio.get(), &format, nullptr, nullptr, 0, probeBytes) < 0) return nullptr;
    if (tagsEnd > 0 && (!readFrom(0) || avio_seek(m_avio.get(), tagsEnd, SEEK_SET) != tagsEnd))
        return nullptr;
    return format;
}

bool Demuxer::openContainer() {
    m_bytes.allow(maxBytesPerPacket);
    const AVInputFormat* format = probe();
    if (!format || isRefused(*format)) return false;
    m_packetBytes = std::string_view(format->name) == "ogg" ? maxOggBytesPerPacket : maxBytesPerPacket;
    m_bytes.allow(m_packetBytes);
    AVFormatContext* context = avformat_alloc_context();
    if (!context) return false;
    context->pb = m_avio.get();
    context->flags |= AVFMT_FLAG_CUSTOM_IO;
    context->io_open = refuseToOpen;
    context->interrupt_callback = {isInterrupted, &m_bytes};
    context->max_streams = maxStreams;
    if (!m_bytes.seekable()) {
        context->probesize = liveProbeBytes;
        context->max_analyze_duration = liveProbeTime;
    }
    // FFmpeg probes PCM for frames of another codec; the first packets suffice for that.
    if (std::string_view(format->name) == "wav" || std::string_view(format->name) == "w64")
        context->max_probe_packets = wavProbePackets;
    AVDictionary* options = nullptr;
    av_dict_set(&options, "protocol_whitelist", "none", 0);
    // The edit list's end is rounded to the movie's time scale; the sample durations are exact (measureMp4).
    av_dict_set(&options, "advanced_editlist", "0", 0);
    const int failed = avformat_open_input(&context, nullptr, format, &options); // frees `context` on failure
    const DictionaryPtr leftOver(options);
    if (failed < 0) return false;
    m_context.reset(context);
    return true;
}

bool Demuxer::chooseStream() {
    const auto find = [this] {
        m_stream = nullptr;
        for (unsigned i = 0; i < m_context->nb_streams; ++i) {
            AVStream* candidate = m_context->streams[i];
            if (candidate->codecpar->codec_type != AVMEDIA_TYPE_AUDIO) continue;
            const bool preferred = candidate->disposition & AV_DISPOSITION_DEFAULT;
            if (!m_stream || (preferred && !(m_stream->disposition & AV_DISPOSITION_DEFAULT)))
                m_stream = candidate;
        }
        return m_stream != nullptr;
    };
    const bool known = find() && isComplete(*m_stream);
    const bool unmeasured = m_bytes.seekable() && known && m_stream->duration == AV_NOPTS_VALUE;
    if (!known || unmeasured) {
        if (avformat_find_stream_info(m_context.get(), nullptr) < 0) return false;
        if (!find()) return false;
    }
    for (unsigned i = 0; i < m_context->nb_streams; ++i)
        if (m_context->streams[i] != m_stream) m_context->streams[i]->discard = AVDISCARD_ALL;
    return true;
}

bool Demuxer::is(const char* name) const {
    return av_match_name(name, m_context->iformat->name) > 0;
}

bool Demuxer::isOf(Format format) const {
    const AVCodecID codec = m_stream->codecpar->codec_id;
    switch (format) {
    case Format::any:
        return true;
    case Format::flac:
        return codec == AV_CODEC_ID_FLAC && (is("flac") || is("ogg"));
    case Format::ape:
        return codec == AV_CODEC_ID_APE && is("ape");
    case Format::opus:
        return codec == AV_CODEC_ID_OPUS && is("ogg");
    case Format::wavpack:
        return codec == AV_CODEC_ID_WAVPACK && is("wv");
    }
    return false;
}

int Demuxer::next(AVPacket& packet) {
    for (;;) {
        av_packet_unref(&packet);
        m_bytes.allow(m_packetBytes);
        const int result = av_read_frame(m_context.get(), &packet);
        if (result < 0 || packet.stream_index == m_stream->index) return result;
        if (m_bytes.interrupted()) return AVERROR_EXIT;
    }
}

std::optional<std::string> Demuxer::takeComments() {
    const bool changed = (m_stream->event_flags & AVSTREAM_EVENT_FLAG_METADATA_UPDATED) != 0;
    if (std::exchange(m_commentsTaken, true) && !changed) return std::nullopt;
    m_stream->event_flags &= ~AVSTREAM_EVENT_FLAG_METADATA_UPDATED;
    std::string comments;
    for (const AVDictionary* texts : {m_stream->metadata, m_context->metadata}) {
        const AVDictionaryEntry* text = nullptr;
        while ((text = av_dict_get(texts, "", text, AV_DICT_IGNORE_SUFFIX)))
            addComment(comments, text->key, text->value);
    }
    av_dict_free(&m_stream->metadata); // FFmpeg would append the next link's comments
    return comments;
}

bool Demuxer::seek(std::int64_t timestamp) {
    m_avio->error = 0;                                       // clear the error of a cancelled read
    m_bytes.allow(std::numeric_limits<std::int64_t>::max()); // a seek may read the whole file
    return av_seek_frame(m_context.get(), m_stream->index, timestamp, AVSEEK_FLAG_BACKWARD) >= 0;
}

/// FFmpeg derives the times within an Ogg page from the page's end time, which is wrong for the last page:
/// its end is trimmed.
bool Demuxer::guessesTimeAt(std::int64_t offset) {
    if (!is("ogg")) return false;
    if (!m_lastPage) {
        constexpr std::int64_t maxPageBytes = 65'307;
        const std::int64_t here = avio_tell(m_avio.get());
        const std::int64_t tailStart = std::max<std::int64_t>(m_bytes.size() - maxPageBytes, 0);
        std::string tail(maxPageBytes, '\0');
        if (avio_seek(m_avio.get(), tailStart, SEEK_SET) < 0) return true;
        const int count =
            avio_read(m_avio.get(), reinterpret_cast<unsigned char*>(tail.data()), maxPageBytes);
        if (avio_seek(m_avio.get(), here, SEEK_SET) < 0 || count < 0 || m_bytes.interrupted()) return true;
        const std::size_t page =
            std::string_view(tail).substr(0, static_cast<std::size_t>(count)).rfind("OggS");
        m_lastPage = tailStart + (page == std::string::npos ? 0 : static_cast<std::int64_t>(page));
    }
    return offset >= *m_lastPage;
}

std::optional<std::int64_t> Demuxer::length(int sampleRate) const {
    if (m_flacFrames) return m_flacFrames;
    if (!m_duration) return std::nullopt;
    // The container may state half the rate at which HE-AAC is decoded.
    const int ownRate = m_stream->codecpar->sample_rate > 0 ? m_stream->codecpar->sample_rate : sampleRate;
    const std::int64_t frames = av_rescale_q(*m_duration, m_stream->time_base, {1, sampleRate}) -
                                av_rescale(m_paddingFrames, sampleRate, ownRate);
    return std::max<std::int64_t>(frames, 0);
}

void Demuxer::measure() {
    if (!m_bytes.seekable() && m_bytes.size() < 0) return;
    if (m_stream->duration != AV_NOPTS_VALUE && m_stream->duration >= 0)
        m_duration = m_stream->duration;
    else if (m_context->duration != AV_NOPTS_VALUE && m_context->duration > 0)
        m_duration = av_rescale_q(m_context->duration, AV_TIME_BASE_Q, m_stream->time_base);
    if (m_stream->codecpar->codec_id == AV_CODEC_ID_FLAC) return measureFlac();
    if (is("mp3")) return measureMp3();
    if (is("mp4")) return measureMp4();
    if (is("ogg") && m_stream->codecpar->codec_id == AV_CODEC_ID_OPUS)
        m_paddingFrames = m_stream->codecpar->initial_padding;
}

/// Tags of the container take precedence over ID3v2 and APE tags.
void Demuxer::readGain() {
    ReplayGain gain;
    for (const AVDictionary* texts : {m_context->metadata, m_stream->metadata})
        readDictionaryGain(texts, gain);
    gain.complete(m_replayGain);
    m_replayGain = gain;
    if (!m_bytes.seeksFast() || (!is("mp3") && !is("aac"))) return;
    const std::int64_t here = avio_tell(m_avio.get());
    readApeGain(*m_avio, m_bytes.size(), m_replayGain);
    avio_seek(m_avio.get(), here, SEEK_SET);
}

/// Takes the exact length from STREAMINFO, as containers such as Matroska round it to their time base.
void Demuxer::measureFlac() {
    const AVCodecParameters& parameters = *m_stream->codecpar;
    if (parameters.extradata_size <= 0 || parameters.sample_rate <= 0) return;
    const auto info =
        flac::parseStreamInfo({parameters.extradata, static_cast<std::size_t>(parameters.extradata_size)});
    if (info && info->totalSamples > 0) m_flacFrames = info->totalSamples;
}

void Demuxer::measureMp3() {
    if (!m_bytes.seekable()) return;
    const std::int64_t here = avio_tell(m_avio.get());
    if (avio_seek(m_avio.get(), 0, SEEK_SET) != 0) return;
    skipId3Tags(*m_avio);
    const std::optional<LameTag> tag = readLameTag(*m_avio);
    avio_seek(m_avio.get(), here, SEEK_SET);
    if (!tag) return;
    m_paddingFrames = tag->startPadding() + tag->endPadding();
    // With a constant bit rate a seek computes the byte offset; otherwise it reads every frame up to the
    // target.
    m_constantBitRate = tag->constantBitRate;
    if (m_constantBitRate) m_context->flags |= AVFMT_FLAG_FAST_SEEK;
}

/// Finds the padding at the end. FFmpeg states it only in the duration of the last sample; other encoders
/// state it in iTunes' comment, or end the movie before the last packet's end.
void Demuxer::measureMp4() {
    const int entries = avformat_index_get_entries_count(m_stream);
    if (!m_duration || entries < 2 || m_stream->nb_frames != entries)
        return; // not all fragments are known yet
    const AVIndexEntry& first = *avformat_index_get_entry(m_stream, 0);
    const AVIndexEntry& last = *avformat_index_get_entry(m_stream, entries - 1);
    const std::int64_t media = *m_duration + first.timestamp;
    if (media <= last.timestamp) return;
    m_paddingPastLength = true;
    m_duration = media;

    const AVDictionaryEntry* comment = av_dict_get(m_context->metadata, "iTunSMPB", nullptr, 0);
    unsigned priming = 0, remainder = 0;
    unsigned long long samples = 0;
    if (comment && std::sscanf(comment->value, "%*x %x %x %llx", &priming, &remainder, &samples) == 3 &&
        samples > 0) {
        const auto stated =
            av_rescale_q(static_cast<std::int64_t>(std::min(samples, 1ULL << 48)),
                         {1, std::max(1, m_stream->codecpar->sample_rate)}, m_stream->time_base);
        m_duration = std::min(media, stated);
        return;
    }
    const std::int64_t movie = av_rescale_q(m_context->duration, AV_TIME_BASE_Q, m_stream->time_base);
    // Tolerate one tick of the coarsest usual time scale, 1/600 s.
    const std::int64_t rounding = av_rescale_q(1, {1, 500}, m_stream->time_base);
    if (m_context->nb_streams == 1 && movie > last.timestamp && movie + rounding < media) m_duration = movie;
}

} // namespace bass
