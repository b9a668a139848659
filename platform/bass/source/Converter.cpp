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

/// Input frames per call of the resampler: bounds the output for very low sample rates.
constexpr int maxFramesPerCall = 4096;

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

/// Mixing gains in two rows (left, right) for a layout without known positions: channels alternate between
/// the sides.
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
    return m_context && m_rate == frame.sample_rate && m_format == frame.format &&
           m_channels == frame.ch_layout.nb_channels && m_channelMask == maskOf(frame.ch_layout);
}

bool Converter::configure(const AVFrame& frame) {
    if (m_context) finish();
    m_rate = frame.sample_rate;
    m_format = frame.format;
    m_channels = frame.ch_layout.nb_channels;
    m_channelMask = maskOf(frame.ch_layout);
    m_framesIn = m_framesOut = 0;

    AVChannelLayout stereo = AV_CHANNEL_LAYOUT_STEREO;
    AVChannelLayout layout = layoutOf(frame);
    SwrContext* context = nullptr;
    if (swr_alloc_set_opts2(&context, &stereo, AV_SAMPLE_FMT_FLT, sampleRate, &layout,
                            static_cast<AVSampleFormat>(m_format), m_rate, 0, nullptr) < 0)
        return false;
    m_context.reset(context);
    av_opt_set_double(context, "rematrix_maxval", 1.0, 0);
    if (m_rate != sampleRate) av_opt_set(context, "resampler", "soxr", 0);
    if (m_channels == 1 || layout.order == AV_CHANNEL_ORDER_UNSPEC) {
        const std::vector<double> matrix = alternatingMatrix(m_channels);
        if (swr_set_matrix(context, matrix.data(), m_channels) < 0) return false;
    }
    return swr_init(context) >= 0;
}

bool Converter::push(const AVFrame& frame, int offset, int count) {
    if (!isConfiguredFor(frame) && !configure(frame)) {
        m_context.reset();
        return false;
    }
    const auto format = static_cast<AVSampleFormat>(m_format);
    const bool planar = av_sample_fmt_is_planar(format);
    const int stride = av_get_bytes_per_sample(format) * (planar ? 1 : m_channels);
    std::vector<const std::uint8_t*> planes(planar ? static_cast<std::size_t>(m_channels) : 1);
    for (int done = 0; done < count;) {
        for (std::size_t plane = 0; plane < planes.size(); ++plane)
            planes[plane] = frame.extended_data[plane] + static_cast<std::ptrdiff_t>(offset + done) * stride;
        const int part = std::min(count - done, maxFramesPerCall);
        if (convert(planes.data(), part) < 0) return false;
        m_framesIn += part;
        done += part;
    }
    return true;
}

int Converter::convert(const std::uint8_t** input, int count) {
    const int room = swr_get_out_samples(m_context.get(), count);
    if (room < 0) return room;
    m_converted.erase(m_converted.begin(), m_converted.begin() + static_cast<std::ptrdiff_t>(m_taken));
    m_taken = 0;
    const std::size_t before = m_converted.size();
    m_converted.resize(before + static_cast<std::size_t>(room) * channelCount);
    auto* output = reinterpret_cast<std::uint8_t*>(m_converted.data() + before);
    const int frames = swr_convert(m_context.get(), &output, room, input, count);
    m_converted.resize(before + static_cast<std::size_t>(std::max(frames, 0)) * channelCount);
    m_framesOut += std::max(frames, 0);
    return frames;
}

void Converter::finish() {
    if (!m_context) return;
    if (m_rate != sampleRate) {
        while (convert(nullptr, 0) > 0) {
        }
        const std::int64_t surplus = m_framesOut - av_rescale_rnd(m_framesIn, sampleRate, m_rate, m_rounding);
        const auto size = static_cast<std::int64_t>(m_converted.size()) - surplus * channelCount;
        m_converted.resize(static_cast<std::size_t>(std::max(size, static_cast<std::int64_t>(m_taken))));
    }
    m_context.reset();
}

void Converter::reset() {
    m_context.reset();
    m_converted.clear();
    m_taken = 0;
}

std::size_t Converter::take(std::span<float> out) {
    const std::size_t count =
        std::min(out.size() / channelCount * channelCount, m_converted.size() - m_taken);
    std::copy_n(m_converted.begin() + static_cast<std::ptrdiff_t>(m_taken), count, out.begin());
    m_taken += count;
    return count / channelCount;
}

} // namespace bass
