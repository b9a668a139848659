#include "platform/bass/source/Source.h"

#include <algorithm>
#include <bit>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <span>
#include <string>
#include <vector>

namespace {

double millisecondsSince(std::chrono::steady_clock::time_point start) {
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
}

// FNV-1a over the samples' bits: two decoders that give the same sound give the same number.
std::uint64_t hash(std::uint64_t soFar, std::span<const float> samples) {
    for (const float sample : samples)
        soFar = (soFar ^ std::bit_cast<std::uint32_t>(sample)) * 0x100000001b3;
    return soFar;
}

void decode(const std::string& name, double seekSeconds) {
    auto start = std::chrono::steady_clock::now();
    const bool isAddress = name.starts_with("http://") || name.starts_with("https://");
    auto source = isAddress ? bass::openUrl(name) : bass::openFile(name, bass::Format::any);
    const double opening = millisecondsSince(start);
    if (!source) {
        std::printf("%s: not opened (%.2f ms)\n", name.c_str(), opening);
        return;
    }
    double seeking = 0;
    if (seekSeconds >= 0) {
        start = std::chrono::steady_clock::now();
        if (!source->seek(static_cast<std::int64_t>(seekSeconds * bass::sampleRate)))
            std::printf("no seek; ");
    }
    std::vector<float> buffer(static_cast<std::size_t>(4096 * bass::channelCount));
    std::int64_t frames = 0;
    float peak = 0;
    std::uint64_t sound = 0xcbf29ce484222325;
    bass::ReadResult result;
    do {
        result = source->read(buffer);
        if (frames == 0) seeking = millisecondsSince(start);
        for (std::size_t i = 0; i < result.frames * bass::channelCount; ++i)
            peak = std::max(peak, std::abs(buffer[i]));
        sound = hash(sound, std::span(buffer).first(result.frames * bass::channelCount));
        frames += static_cast<std::int64_t>(result.frames);
    } while (result.status == bass::ReadResult::Status::more ||
             result.status == bass::ReadResult::Status::starved);
    const char* how = result.status == bass::ReadResult::Status::end ? "end" : "failed";
    std::printf("%s: %lld frames, length %lld, peak %.6f, hash %016llx, %s; opened in %.2f ms, first sound "
                "after %.2f ms\n",
                name.c_str(), static_cast<long long>(frames),
                static_cast<long long>(source->lengthFrames().value_or(-1)), static_cast<double>(peak),
                static_cast<unsigned long long>(sound), how, opening, seeking);
}

} // namespace

/// run-decoder [-s SECONDS] FILE|URL...: decodes each (from SECONDS on) and prints what came out.
int main(int argc, char** argv) {
    double seekSeconds = -1;
    int first = 1;
    if (argc > 2 && std::string(argv[1]) == "-s") {
        seekSeconds = std::atof(argv[2]);
        first = 3;
    }
    for (int i = first; i < argc; ++i)
        decode(argv[i], seekSeconds);
}
