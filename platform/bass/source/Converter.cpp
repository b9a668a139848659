#include "platform/bass/source/Converter.h"

#include "platform/bass/source/Source.h"

#include <algorithm>
#include <array>
#include <vector>

extern "C" {
#include <libavutil/opt.h>
}

namespace bass {
namespace {

/// Bounds what one call puts out for the lowest of rates.
constexpr int mostFramesAtOnce = 4096;

std::uint64_t maskOf(const AVChannelLayout& layout) {
    return layout.order == AV_CHANNEL_ORDER_NATIVE ? layout.u.mask : 0;
}

/// The layout to mix from; a count without a usual layout stays unspecified.
AVChannelLayout layoutOf(const AVFrame& frame) {
    AVChannelLayout layout{};
    const std::uint64_t mask = maskOf(frame.ch_layout);
    const int channels = frame.ch_layout.nb_channels;
    if (channels == 2 || !mask)
        av_channel_layout_default(&layout, channels);
    else
        av_channel_layout_from_mask(&layout, mask);
    return layout;
}

/// Two rows (left, right) of gains: channels without known places alternate between the sides.
std::vector<double> alternatingMatrix(int channels) {
    std::vector<double> matrix(2 * static_cast<std::size_t>(channels), 0.0);
    const double gain = channels == 1 ? 1.0 : 2.0 / (channels + channels % 2);
    for (int channel = 0; channel < channels; ++channel) {
        const bool left = channels == 1 || channel % 2 == 0;
        const bool right = channels == 1 || channel % 2 == 1;
        if (left) matrix[static_cast<std::size_t>(channel)] = gain;
        if (right) matrix[static_cast<std::size_t>(channels) + static_cast<std::size_t>(channel)] = gain;
    }
    return matrix;
}

} // namespace

bool Converter::isConfiguredFor(const AVFrame& frame) const {
    return context_ && rate_ == frame.sample_rate && format_ == frame.format &&
           channels_ == frame.ch_layout.nb_channels && channelMask_ == maskOf(frame.ch_layout);
}

bool Converter::configure(const AVFrame& frame) {
    if (context_) finish();
    rate_ = frame.sample_rate;
    format_ = frame.format;
    channels_ = frame.ch_layout.nb_channels;
    channelMask_ = maskOf(frame.ch_layout);
    framesIn_ = framesOut_ = 0;

    AVChannelLayout stereo = AV_CHANNEL_LAYOUT_STEREO;
    AVChannelLayout layout = layoutOf(frame);
    SwrContext* context = nullptr;
    if (swr_alloc_set_opts2(&context, &stereo, AV_SAMPLE_FMT_FLT, sampleRate, &layout,
                            static_cast<AVSampleFormat>(format_), rate_, 0, nullptr) < 0)
        return false;
    context_.reset(context);
    av_opt_set_double(context, "rematrix_maxval", 1.0, 0);
    if (rate_ != sampleRate) av_opt_set(context, "resampler", "soxr", 0);
    if (channels_ == 1 || layout.order == AV_CHANNEL_ORDER_UNSPEC) {
        const std::vector<double> matrix = alternatingMatrix(channels_);
        if (swr_set_matrix(context, matrix.data(), channels_) < 0) return false;
    }
    return swr_init(context) >= 0;
}

bool Converter::push(const AVFrame& frame, int offset, int count) {
    if (!isConfiguredFor(frame) && !configure(frame)) {
        context_.reset();
        return false;
    }
    const auto format = static_cast<AVSampleFormat>(format_);
    const bool planar = av_sample_fmt_is_planar(format);
    const int stride = av_get_bytes_per_sample(format) * (planar ? 1 : channels_);
    std::vector<const std::uint8_t*> planes(planar ? static_cast<std::size_t>(channels_) : 1);
    for (int done = 0; done < count;) {
        for (std::size_t plane = 0; plane < planes.size(); ++plane)
            planes[plane] = frame.extended_data[plane] + static_cast<std::ptrdiff_t>(offset + done) * stride;
        const int part = std::min(count - done, mostFramesAtOnce);
        if (convert(planes.data(), part) < 0) return false;
        framesIn_ += part;
        done += part;
    }
    return true;
}

int Converter::convert(const std::uint8_t** input, int count) {
    const int room = swr_get_out_samples(context_.get(), count);
    if (room < 0) return room;
    converted_.erase(converted_.begin(), converted_.begin() + static_cast<std::ptrdiff_t>(taken_));
    taken_ = 0;
    const std::size_t before = converted_.size();
    converted_.resize(before + static_cast<std::size_t>(room) * channelCount);
    auto* output = reinterpret_cast<std::uint8_t*>(converted_.data() + before);
    const int frames = swr_convert(context_.get(), &output, room, input, count);
    converted_.resize(before + static_cast<std::size_t>(std::max(frames, 0)) * channelCount);
    framesOut_ += std::max(frames, 0);
    return frames;
}

void Converter::finish() {
    if (!context_) return;
    if (rate_ != sampleRate) {
        while (convert(nullptr, 0) > 0) {
        }
        const std::int64_t surplus = framesOut_ - av_rescale_rnd(framesIn_, sampleRate, rate_, rounding_);
        const auto size = static_cast<std::int64_t>(converted_.size()) - surplus * channelCount;
        converted_.resize(static_cast<std::size_t>(std::max(size, static_cast<std::int64_t>(taken_))));
    }
    context_.reset();
}

void Converter::reset() {
    context_.reset();
    converted_.clear();
    taken_ = 0;
}

std::size_t Converter::take(std::span<float> out) {
    const std::size_t count = std::min(out.size() / channelCount * channelCount, converted_.size() - taken_);
    std::copy_n(converted_.begin() + static_cast<std::ptrdiff_t>(taken_), count, out.begin());
    taken_ += count;
    return count / channelCount;
}

} // namespace bass
