#include "platform/bass/source/Demuxer.h"

#include "platform/bass/source/FlacHeader.h"
#include "platform/bass/source/LameTag.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <string>
#include <string_view>

extern "C" {
#include <libavutil/avstring.h>
}

namespace bass {
namespace {

/// These open what their text names, or are made of nothing but their file's name.
constexpr std::array<std::string_view, 11> refusedContainers = {
    "concat", "dash", "ffmetadata", "hls", "image2", "image2pipe", "imf", "rtp", "rtsp", "sdp", "tty"};

constexpr unsigned probeBytes = 1 << 20;
constexpr int maxStreams = 64;
constexpr int wavProbePackets = 4;
/// A live stream comes no faster than it plays: what is looked at is waited for.
constexpr int liveProbeBytes = 128 * 1024;
constexpr std::int64_t liveProbeTime = AV_TIME_BASE;

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

/// An audio stream's codec parameters that a decoder completes from the first packet by itself.
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
    std::unique_ptr<Demuxer> demuxer(new Demuxer(bytes));
    if (!demuxer->openContainer() || !demuxer->chooseStream() || !demuxer->isOf(format)) return nullptr;
    demuxer->measure();
    return demuxer;
}

bool Demuxer::readFrom(std::int64_t offset) {
    if (bytes_.seekable() && bytes_.seek(offset) != offset) return false;
    avio_ = makeAvio(bytes_);
    return avio_ != nullptr;
}

const AVInputFormat* Demuxer::probe() {
    if (!readFrom(0)) return nullptr;
    // A tag may be longer than any probe: what follows it is the content.
    const std::int64_t tagsEnd = bytes_.seekable() ? skipId3Tags(*avio_) : 0;
    if (tagsEnd > 0 && !readFrom(tagsEnd)) return nullptr;
    const AVInputFormat* format = nullptr;
    if (av_probe_input_buffer2(avio_.get(), &format, nullptr, nullptr, 0, probeBytes) < 0) return nullptr;
    if (tagsEnd > 0 && !readFrom(0)) return nullptr;
    return format;
}

bool Demuxer::openContainer() {
    const AVInputFormat* format = probe();
    if (!format || isRefused(*format)) return false;
    AVFormatContext* context = avformat_alloc_context();
    if (!context) return false;
    context->pb = avio_.get();
    context->flags |= AVFMT_FLAG_CUSTOM_IO;
    context->io_open = refuseToOpen;
    context->interrupt_callback = {isInterrupted, &bytes_};
    context->max_streams = maxStreams;
    if (!bytes_.seekable()) {
        context->probesize = liveProbeBytes;
        context->max_analyze_duration = liveProbeTime;
    }
    // PCM is probed for another codec's frames within it; the first packets show them.
    if (std::string_view(format->name) == "wav" || std::string_view(format->name) == "w64")
        context->max_probe_packets = wavProbePackets;
    AVDictionary* options = nullptr;
    av_dict_set(&options, "protocol_whitelist", "none", 0);
    // The edit list's end is rounded to the movie's time scale; the sample durations are exact (measureMp4).
    av_dict_set(&options, "advanced_editlist", "0", 0);
    const int failed = avformat_open_input(&context, nullptr, format, &options); // frees `context` on failure
    const DictionaryPtr leftOver(options);
    if (failed < 0) return false;
    context_.reset(context);
    return true;
}

bool Demuxer::chooseStream() {
    const auto find = [this] {
        stream_ = nullptr;
        for (unsigned i = 0; i < context_->nb_streams; ++i) {
            AVStream* candidate = context_->streams[i];
            if (candidate->codecpar->codec_type != AVMEDIA_TYPE_AUDIO) continue;
            const bool preferred = candidate->disposition & AV_DISPOSITION_DEFAULT;
            if (!stream_ || (preferred && !(stream_->disposition & AV_DISPOSITION_DEFAULT)))
                stream_ = candidate;
        }
        return stream_ != nullptr;
    };
    const bool known = find() && isComplete(*stream_);
    const bool unmeasured = bytes_.seekable() && known && stream_->duration == AV_NOPTS_VALUE;
    if (!known || unmeasured) {
        if (avformat_find_stream_info(context_.get(), nullptr) < 0) return false;
        if (!find()) return false;
    }
    for (unsigned i = 0; i < context_->nb_streams; ++i)
        if (context_->streams[i] != stream_) context_->streams[i]->discard = AVDISCARD_ALL;
    return true;
}

bool Demuxer::is(const char* name) const {
    return av_match_name(name, context_->iformat->name) > 0;
}

bool Demuxer::isOf(Format format) const {
    const AVCodecID codec = stream_->codecpar->codec_id;
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
        const int result = av_read_frame(context_.get(), &packet);
        if (result < 0 || packet.stream_index == stream_->index) return result;
        if (bytes_.interrupted()) return AVERROR_EXIT;
    }
}

bool Demuxer::seek(std::int64_t timestamp) {
    return av_seek_frame(context_.get(), stream_->index, timestamp, AVSEEK_FLAG_BACKWARD) >= 0;
}

/// FFmpeg counts the times within an Ogg page back from its end, but not in the last one, whose end is cut.
bool Demuxer::guessesTimeAt(std::int64_t offset) {
    if (!is("ogg")) return false;
    if (!lastPage_) {
        constexpr std::int64_t longestPage = 65'307;
        const std::int64_t here = avio_tell(avio_.get());
        const std::int64_t tailStart = std::max<std::int64_t>(bytes_.size() - longestPage, 0);
        std::string tail(longestPage, '\0');
        if (avio_seek(avio_.get(), tailStart, SEEK_SET) < 0) return true;
        const int count = avio_read(avio_.get(), reinterpret_cast<unsigned char*>(tail.data()), longestPage);
        if (avio_seek(avio_.get(), here, SEEK_SET) < 0 || count < 0) return true;
        const std::size_t page =
            std::string_view(tail).substr(0, static_cast<std::size_t>(count)).rfind("OggS");
        lastPage_ = tailStart + (page == std::string::npos ? 0 : static_cast<std::int64_t>(page));
    }
    return offset >= *lastPage_;
}

std::optional<std::int64_t> Demuxer::length(int sampleRate) const {
    if (flacFrames_) return flacFrames_;
    if (!duration_) return std::nullopt;
    // HE-AAC is decoded at twice the rate that its container may state.
    const int ownRate = stream_->codecpar->sample_rate > 0 ? stream_->codecpar->sample_rate : sampleRate;
    const std::int64_t frames = av_rescale_q(*duration_, stream_->time_base, {1, sampleRate}) -
                                av_rescale(paddingFrames_, sampleRate, ownRate);
    return std::max<std::int64_t>(frames, 0);
}

void Demuxer::measure() {
    if (!bytes_.seekable() && bytes_.size() < 0) return;
    if (stream_->duration != AV_NOPTS_VALUE && stream_->duration >= 0)
        duration_ = stream_->duration;
    else if (context_->duration != AV_NOPTS_VALUE && context_->duration > 0)
        duration_ = av_rescale_q(context_->duration, AV_TIME_BASE_Q, stream_->time_base);
    if (stream_->codecpar->codec_id == AV_CODEC_ID_FLAC) return measureFlac();
    if (is("mp3")) return measureMp3();
    if (is("mp4")) return measureMp4();
    if (is("ogg") && stream_->codecpar->codec_id == AV_CODEC_ID_OPUS)
        paddingFrames_ = stream_->codecpar->initial_padding;
}

/// Containers such as Matroska round to a time base of their own.
void Demuxer::measureFlac() {
    const AVCodecParameters& parameters = *stream_->codecpar;
    if (parameters.extradata_size <= 0 || parameters.sample_rate <= 0) return;
    const auto info =
        flac::parseStreamInfo({parameters.extradata, static_cast<std::size_t>(parameters.extradata_size)});
    if (info && info->totalSamples > 0) flacFrames_ = info->totalSamples;
}

void Demuxer::measureMp3() {
    if (!bytes_.seekable()) return;
    const std::int64_t here = avio_tell(avio_.get());
    if (avio_seek(avio_.get(), 0, SEEK_SET) != 0) return;
    skipId3Tags(*avio_);
    const std::optional<LameTag> tag = readLameTag(*avio_);
    avio_seek(avio_.get(), here, SEEK_SET);
    if (!tag) return;
    paddingFrames_ = tag->startPadding() + tag->endPadding();
    // A constant bit rate turns a time into a byte offset; otherwise every frame up to it must be walked.
    constantBitRate_ = tag->constantBitRate;
    if (constantBitRate_) context_->flags |= AVFMT_FLAG_FAST_SEEK;
}

/// The last sample duration says where the sound ends within the last packet; encoders such as FFmpeg's put
/// it nowhere else. Others state the end in iTunes' comment, or end the movie before its last packet does.
void Demuxer::measureMp4() {
    const int entries = avformat_index_get_entries_count(stream_);
    if (!duration_ || entries < 2 || stream_->nb_frames != entries) return; // fragments are not all known yet
    const AVIndexEntry& first = *avformat_index_get_entry(stream_, 0);
    const AVIndexEntry& last = *avformat_index_get_entry(stream_, entries - 1);
    const std::int64_t media = *duration_ + first.timestamp;
    if (media <= last.timestamp) return;
    paddingPastLength_ = true;
    duration_ = media;

    const AVDictionaryEntry* comment = av_dict_get(context_->metadata, "iTunSMPB", nullptr, 0);
    unsigned priming = 0, remainder = 0;
    unsigned long long samples = 0;
    if (comment && std::sscanf(comment->value, "%*x %x %x %llx", &priming, &remainder, &samples) == 3 &&
        samples > 0) {
        const auto stated =
            av_rescale_q(static_cast<std::int64_t>(std::min(samples, 1ULL << 48)),
                         {1, std::max(1, stream_->codecpar->sample_rate)}, stream_->time_base);
        duration_ = std::min(media, stated);
        return;
    }
    const std::int64_t movie = av_rescale_q(context_->duration, AV_TIME_BASE_Q, stream_->time_base);
    // A tick of the coarsest usual time scale, 1/600 s, is only rounding.
    const std::int64_t rounding = av_rescale_q(1, {1, 500}, stream_->time_base);
    if (context_->nb_streams == 1 && movie > last.timestamp && movie + rounding < media) duration_ = movie;
}

} // namespace bass
