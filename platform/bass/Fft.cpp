#include "platform/bass/Fft.h"

#include <cmath>
#include <complex>
#include <cstdint>
#include <numbers>
#include <utility>

namespace bass {
namespace {

using Complex = std::complex<float>;

/// Written out: the library's also looks for infinities, which takes several times as long.
Complex product(Complex a, Complex b) {
    return {a.real() * b.real() - a.imag() * b.imag(), a.real() * b.imag() + a.imag() * b.real()};
}

/// The real input is transformed as half as many complex numbers, every other sample as an imaginary part.
constexpr std::size_t half = fftFrames / 2;

std::size_t bitReversed(std::size_t index) {
    std::size_t reversed = 0;
    for (std::size_t bit = 1; bit < half; bit <<= 1)
        reversed = reversed << 1 | (index & bit ? 1 : 0);
    return reversed;
}

struct Tables {
    std::array<float, fftFrames> window;
    std::array<Complex, half> twiddles;     ///< Of a transform of fftFrames.
    std::array<std::uint16_t, half> places; ///< Of the input, in bit-reversed order.
    Tables() {
        const double turn = 2 * std::numbers::pi / fftFrames;
        for (std::size_t i = 0; i < window.size(); ++i)
            window[i] = static_cast<float>(0.5 - 0.5 * std::cos(turn * static_cast<double>(i)));
        for (std::size_t i = 0; i < half; ++i) {
            twiddles[i] = std::polar(1.0F, static_cast<float>(-turn * static_cast<double>(i)));
            places[i] = static_cast<std::uint16_t>(bitReversed(i));
        }
    }
};

/// Cooley and Tukey, radix 2, in place; the input stands in bit-reversed order.
void transform(std::array<Complex, half>& data, const Tables& tables) {
    for (std::size_t width = 1; width < half; width *= 2) {
        const std::size_t stride = half / width;
        for (std::size_t start = 0; start < half; start += 2 * width) {
            for (std::size_t i = 0; i < width; ++i) {
                const Complex odd = product(data[start + width + i], tables.twiddles[i * stride]);
                const Complex even = data[start + i];
                data[start + i] = even + odd;
                data[start + width + i] = even - odd;
            }
        }
    }
}

/// Bin `i` of the real input's transform, from the packed one: the transforms of the even and the odd samples
/// are its parts that are symmetric and antisymmetric about conjugation.
Complex bin(const std::array<Complex, half>& data, std::size_t i, const Tables& tables) {
    const Complex mirrored = std::conj(data[(half - i) % half]);
    const Complex even = data[i] + mirrored;
    const Complex odd = data[i] - mirrored;
    return 0.5F * (even + product({odd.imag(), -odd.real()}, tables.twiddles[i]));
}

} // namespace

std::array<float, fftFrames / 2> magnitudes(std::span<const float> frames) {
    static const Tables tables;
    const auto sample = [&](std::size_t i) {
        return 0.5F * (frames[2 * i] + frames[2 * i + 1]) * tables.window[i];
    };
    std::array<Complex, half> data;
    for (std::size_t i = 0; i < half; ++i)
        data[tables.places[i]] = {sample(2 * i), sample(2 * i + 1)};
    transform(data, tables);
    // A sine's energy goes half to each of two mirrored bins, and the window's mean is a half.
    constexpr float scale = 4.0F / fftFrames;
    std::array<float, fftFrames / 2> result{};
    for (std::size_t i = 0; i < result.size(); ++i)
        result[i] = scale * std::sqrt(std::norm(bin(data, i, tables)));
    return result;
}

} // namespace bass
