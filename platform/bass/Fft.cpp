#include "platform/bass/Fft.h"

#include <cmath>
#include <complex>
#include <numbers>
#include <utility>

namespace bass {
namespace {

using Complex = std::complex<float>;

struct Tables {
    std::array<float, fftFrames> window;
    std::array<Complex, fftFrames / 2> twiddles;
    Tables() {
        const double turn = 2 * std::numbers::pi / fftFrames;
        for (std::size_t i = 0; i < window.size(); ++i)
            window[i] = static_cast<float>(0.5 - 0.5 * std::cos(turn * static_cast<double>(i)));
        for (std::size_t i = 0; i < twiddles.size(); ++i)
            twiddles[i] = std::polar(1.0F, static_cast<float>(-turn * static_cast<double>(i)));
    }
};

std::size_t bitReversed(std::size_t index) {
    std::size_t reversed = 0;
    for (std::size_t bit = 1; bit < fftFrames; bit <<= 1)
        reversed = reversed << 1 | (index & bit ? 1 : 0);
    return reversed;
}

/// Cooley and Tukey, radix 2, in place; the input stands in bit-reversed order.
void transform(std::array<Complex, fftFrames>& data, const Tables& tables) {
    for (std::size_t half = 1; half < fftFrames; half *= 2) {
        const std::size_t stride = fftFrames / (2 * half);
        for (std::size_t start = 0; start < fftFrames; start += 2 * half) {
            for (std::size_t i = 0; i < half; ++i) {
                const Complex odd = data[start + half + i] * tables.twiddles[i * stride];
                const Complex even = data[start + i];
                data[start + i] = even + odd;
                data[start + half + i] = even - odd;
            }
        }
    }
}

} // namespace

std::array<float, fftFrames / 2> magnitudes(std::span<const float> frames) {
    static const Tables tables;
    std::array<Complex, fftFrames> data;
    for (std::size_t i = 0; i < fftFrames; ++i) {
        const float mono = 0.5F * (frames[2 * i] + frames[2 * i + 1]);
        data[bitReversed(i)] = mono * tables.window[i];
    }
    transform(data, tables);
    // A sine's energy goes half to each of two mirrored bins, and the window's mean is a half.
    constexpr float scale = 4.0F / fftFrames;
    std::array<float, fftFrames / 2> result{};
    for (std::size_t i = 0; i < result.size(); ++i)
        result[i] = scale * std::abs(data[i]);
    return result;
}

} // namespace bass
