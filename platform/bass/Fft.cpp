#include "platform/bass/Fft.h"

#include <cmath>
#include <memory>
#include <new>
#include <numbers>

extern "C" {
#include <libavutil/tx.h>
}

namespace bass {
namespace {

/// Applies a Hann window and a Fourier transform.
class WindowedTransform {
public:
    WindowedTransform() {
        const double turn = 2 * std::numbers::pi / fftFrames;
        for (std::size_t i = 0; i < fftFrames; ++i)
            m_window[i] = static_cast<float>(0.5 - 0.5 * std::cos(turn * static_cast<double>(i)));
        const float scale = 1;
        AVTXContext* context = nullptr;
        if (av_tx_init(&context, &m_transform, AV_TX_FLOAT_RDFT, 0, fftFrames, &scale, 0) < 0)
            throw std::bad_alloc();
        m_context.reset(context);
    }

    std::span<const AVComplexFloat> operator()(std::span<const Frame> frames) {
        for (std::size_t i = 0; i < fftFrames; ++i)
            m_input[i] = 0.5F * (frames[i][0] + frames[i][1]) * m_window[i];
        m_transform(m_context.get(), m_output.data(), m_input.data(), sizeof(float));
        return m_output;
    }

private:
    struct Deleter {
        void operator()(AVTXContext* context) const { av_tx_uninit(&context); }
    };

    // The alignment that av_tx's fastest implementations require.
    alignas(64) std::array<float, fftFrames> m_input{};
    alignas(64) std::array<AVComplexFloat, fftFrames / 2 + 1> m_output{};
    std::array<float, fftFrames> m_window{};
    std::unique_ptr<AVTXContext, Deleter> m_context;
    av_tx_fn m_transform = nullptr;
};

} // namespace

std::array<float, fftFrames / 2> magnitudes(std::span<const Frame> frames) {
    thread_local WindowedTransform transform; // it holds work buffers
    const auto bins = transform(frames);
    // A sine is split between two mirrored bins, and the window's mean is 0.5.
    constexpr float scale = 4.0F / fftFrames;
    std::array<float, fftFrames / 2> result{};
    for (std::size_t i = 0; i < result.size(); ++i)
        result[i] = scale * std::sqrt(bins[i].re * bins[i].re + bins[i].im * bins[i].im);
    return result;
}

} // namespace bass
