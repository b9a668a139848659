#include "platform/bass/source/Source.h"

#include <algorithm>
#include <bit>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

namespace {

double millisecondsSince(std::chrono::steady_clock::time_point start) {
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
}

const char* nameOf(bass::Failure failure) {
    constexpr const char* names[] = {"none",           "not found", "unreadable",        "no audio",
                                     "name not found", "refused",   "no answer in time", "HTTP status",
                                     "certificate",    "lost"};
    return names[static_cast<std::size_t>(failure)];
}

/// In MB, of the whole run.
double peakMemory() {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);)
        if (line.starts_with("VmHWM:")) return std::stod(line.substr(6)) / 1024;
    return 0;
}

void decode(const std::string& name, double seekSeconds) {
    auto start = std::chrono::steady_clock::now();
    const auto cancel = std::make_shared<bass::Cancel>();
    const bass::OpenedSource opened = bass::isHttpAddress(name)
                                          ? bass::openUrl(name, cancel)
                                          : bass::openFile(name, bass::Format::any, cancel);
    const double opening = millisecondsSince(start);
    if (!opened.source) {
        std::printf("%s: not opened, %s %d (%.2f ms, peak memory %.1f MB)\n", name.c_str(),
                    nameOf(opened.failure), opened.httpStatus, opening, peakMemory());
        return;
    }
    bass::Source& source = *opened.source;
    double seeking = 0;
    if (seekSeconds >= 0) {
        start = std::chrono::steady_clock::now();
        if (!source.seek(static_cast<std::int64_t>(seekSeconds * bass::sampleRate))) std::printf("no seek; ");
    }
    std::vector<float> buffer(static_cast<std::size_t>(4096 * bass::channelCount));
    std::int64_t frames = 0;
    float peak = 0;
    std::uint64_t hash = 14695981039346656037U; // FNV-1a: two runs are compared by it
    bass::ReadResult result;
    do {
        result = source.read(buffer);
        if (frames == 0) seeking = millisecondsSince(start);
        for (std::size_t i = 0; i < result.frames * bass::channelCount; ++i) {
            peak = std::max(peak, std::abs(buffer[i]));
            hash = (hash ^ std::bit_cast<std::uint32_t>(buffer[i])) * 1099511628211U;
        }
        frames += static_cast<std::int64_t>(result.frames);
    } while (result.status == bass::ReadResult::Status::more);
    const char* how = result.status == bass::ReadResult::Status::end ? "end" : "failed";
    std::printf(
        "%s: %lld frames, length %lld, peak %.6f, hash %016llx, %s; opened in %.2f ms, first sound after "
        "%.2f ms, peak memory %.1f MB\n",
        name.c_str(), static_cast<long long>(frames),
        static_cast<long long>(source.lengthFrames().value_or(-1)), static_cast<double>(peak),
        static_cast<unsigned long long>(hash), how, opening, seeking, peakMemory());
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
