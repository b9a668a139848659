// make-demo FOLDER: synthesises the demo's six short pieces (1.wav to 6.wav, 44.1 kHz 16-bit stereo) and its
// cover picture (cover.png): plucked strings after Karplus and Strong ("Digital Synthesis of Plucked-String
// and Drum Timbres", Computer Music Journal 7:2, 1983) over a soft pad.

#include <QImage>
#include <QString>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <numbers>
#include <random>
#include <string>
#include <vector>

namespace {

constexpr int rate = 44100;
constexpr double pieceSeconds = 6.0;
constexpr double beatSeconds = 0.375;

struct Piece {
    int root; // MIDI note
    std::array<int, 8> melody;
    std::array<int, 4> bass;
};

constexpr std::array<Piece, 6> pieces{{
    {60, {0, 4, 7, 12, 11, 7, 4, 7}, {0, -5, -3, -7}},
    {57, {0, 3, 7, 10, 12, 10, 7, 3}, {0, -4, -2, -5}},
    {62, {7, 5, 4, 0, 2, 4, 5, 7}, {0, -7, -5, -3}},
    {55, {0, 7, 3, 10, 7, 14, 12, 7}, {0, -2, -4, -5}},
    {64, {12, 7, 4, 7, 9, 7, 4, 2}, {0, -3, -8, -5}},
    {52, {0, 12, 7, 15, 14, 12, 7, 10}, {0, 3, -2, -4}},
}};

struct Stereo {
    std::vector<double> left = std::vector<double>(static_cast<std::size_t>(pieceSeconds * rate));
    std::vector<double> right = left;
};

double hertz(int note) {
    return 440.0 * std::exp2((note - 69) / 12.0);
}

void pluck(Stereo& out, double atSeconds, int note, double gain, double pan, std::mt19937& random) {
    std::uniform_real_distribution<double> noise(-1, 1);
    std::vector<double> string(static_cast<std::size_t>(rate / hertz(note)));
    std::generate(string.begin(), string.end(), [&] { return noise(random); });
    std::size_t at = 0;
    for (auto i = static_cast<std::size_t>(atSeconds * rate); i < out.left.size(); ++i) {
        const std::size_t next = (at + 1) % string.size();
        const double sample = gain * string[at];
        out.left[i] += sample * (1 - pan);
        out.right[i] += sample * pan;
        string[at] = 0.498 * (string[at] + string[next]);
        at = next;
    }
}

void pad(Stereo& out, double atSeconds, double seconds, int note, double gain) {
    const auto first = static_cast<std::size_t>(atSeconds * rate);
    const auto count = static_cast<std::size_t>(seconds * rate);
    for (std::size_t i = 0; i < count && first + i < out.left.size(); ++i) {
        const double t = static_cast<double>(i) / rate;
        const double swell = std::sin(std::numbers::pi * static_cast<double>(i) / static_cast<double>(count));
        const double phase = 2 * std::numbers::pi * hertz(note) * t;
        out.left[first + i] += gain * swell * std::sin(phase);
        out.right[first + i] += gain * swell * std::sin(phase * 1.003);
    }
}

Stereo render(const Piece& piece, unsigned seed) {
    Stereo out;
    std::mt19937 random(seed);
    const int beats = static_cast<int>(pieceSeconds / beatSeconds) - 2;
    for (int beat = 0; beat < beats; ++beat) {
        const double at = beat * beatSeconds;
        const auto step = static_cast<std::size_t>(beat);
        pluck(out, at, piece.root + piece.melody[step % piece.melody.size()], 0.28, 0.35 + 0.3 * (beat % 2),
              random);
        if (beat % 4 == 0) {
            const int bass = piece.root - 12 + piece.bass[step / 4 % piece.bass.size()];
            pluck(out, at, bass, 0.4, 0.5, random);
            pad(out, at, 4 * beatSeconds, bass + 12, 0.07);
            pad(out, at, 4 * beatSeconds, bass + 19, 0.05);
        }
    }
    return out;
}

void put(std::ofstream& file, std::uint32_t value, int bytes) {
    for (int i = 0; i < bytes; ++i)
        file.put(static_cast<char>(value >> (8 * i)));
}

void writeWav(const std::filesystem::path& path, const Stereo& sound) {
    std::ofstream file(path, std::ios::binary);
    const auto bytes = static_cast<std::uint32_t>(sound.left.size() * 4);
    file << "RIFF";
    put(file, 36 + bytes, 4);
    file << "WAVEfmt ";
    for (const auto& [value, size] :
         {std::pair<std::uint32_t, int>{16, 4}, {1, 2}, {2, 2}, {rate, 4}, {rate * 4, 4}, {4, 2}, {16, 2}})
        put(file, value, size);
    file << "data";
    put(file, bytes, 4);
    const std::size_t fade = rate / 5;
    for (std::size_t i = 0; i < sound.left.size(); ++i) {
        const double end =
            std::min(1.0, static_cast<double>(sound.left.size() - 1 - i) / static_cast<double>(fade));
        for (const double sample : {sound.left[i], sound.right[i]}) {
            const double limited = std::tanh(sample * end);
            put(file, static_cast<std::uint32_t>(static_cast<std::int32_t>(std::lround(limited * 32000))), 2);
        }
    }
}

// A sun over water, in the player's own two colours.
void writeCover(const std::filesystem::path& path) {
    constexpr int size = 480;
    QImage cover(size, size, QImage::Format_RGB32);
    for (int y = 0; y < size; ++y) {
        for (int x = 0; x < size; ++x) {
            const double sunDistance = std::hypot(x - size / 2.0, y - size * 0.45) / (size * 0.22);
            const double glow = std::clamp(1.4 - sunDistance, 0.0, 1.0);
            const bool water = y > size * 0.62;
            const double ripple = water ? 0.5 + 0.5 * std::sin(y * 0.35 + std::sin(x * 0.02) * 3) : 0;
            const double light = sunDistance < 1 && !water ? 1 : glow * 0.5;
            const double depth = static_cast<double>(y) / size;
            const auto channel = [](double value) { return static_cast<int>(std::clamp(value, 0.0, 255.0)); };
            cover.setPixel(x, y,
                           qRgb(channel(20 + 228 * light + 20 * ripple),
                                channel(28 + 60 * depth + 190 * light + 40 * ripple),
                                channel(48 + 120 * depth * (1 - light) + 60 * ripple)));
        }
    }
    cover.save(QString::fromStdString(path.string()));
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: make-demo FOLDER\n");
        return 2;
    }
    const std::filesystem::path folder = argv[1];
    for (unsigned i = 0; i < pieces.size(); ++i)
        writeWav(folder / (std::to_string(i + 1) + ".wav"), render(pieces[i], i + 1));
    writeCover(folder / "cover.png");
}
