#include "core/playlist/TulPlaylistEntry.h"
#include "tests/bass/Sounds.h"
#include "tests/support/Media.h"
#include "tests/support/Usage.h"

#include <algorithm>
#include <cstdlib>
#include <gtest/gtest.h>
#include <thread>

namespace {

namespace fs = std::filesystem;

constexpr double maxMegabytes = 64;
constexpr double maxSeconds = 2; ///< Of one reading.
/// The program that reads tags, without a file.
constexpr double programMegabytes = 8;

std::vector<fs::path> hostileFiles() {
    const fs::path folder = support::scratch() / "hostile";
    fs::create_directory(folder);
    support::run({"/usr/bin/python3", TUL_HOSTILE_FILES, folder.string()});
    std::vector<fs::path> files{fs::directory_iterator(folder), {}};
    std::ranges::sort(files);
    return files;
}

/// Runs on its own thread, at whose end tulplayer-tags is reaped, so that its resource usage is counted. A
/// file that ends the process does not affect the next one.
void readTags(const std::string& path, const std::string& sound) {
    std::thread([&] {
        TulPlaylistEntry entry(path);
        entry.loadCoverArt();
        if (TulPlaylistEntry(sound).title != "Lied") std::abort();
    }).join();
}

void decode(const std::string& path) {
    if (const auto source = sounds::open(path)) static_cast<void>(sounds::read(*source, 44100));
}

TEST(HostileFiles, StayWithinTheLimits) {
    const auto files = hostileFiles();
    ASSERT_GT(files.size(), 50U);
    const fs::path sound = support::encode("a.flac", support::sine(440, 4410), 44100, 2,
                                           {"flac", "-s", "-f", "-T", "TITLE=Lied", "IN", "-o", "OUT"});
    const double own = support::usageOf([] {}).megabytes;
    const auto expectLittle = [&](const char* what, const fs::path& file, double most, int readings,
                                  const auto& work) {
        const support::Usage usage = support::usageOf(work);
        std::printf("%-8s %-24s %6.1f MB %5.2f s\n", what, file.filename().c_str(), usage.megabytes,
                    usage.cpuSeconds);
        EXPECT_TRUE(usage.ended) << what << file;
        EXPECT_LE(usage.megabytes, most) << what << file;
        EXPECT_LE(usage.cpuSeconds, maxSeconds * readings) << what << file;
    };
    for (const fs::path& file : files) {
        const double most = std::max(own, programMegabytes) + maxMegabytes;
        expectLittle("tags", file, most, 2, [&] { readTags(file.string(), sound.string()); });
        expectLittle("sound", file, own + maxMegabytes, 1, [&] { decode(file.string()); });
    }
}

} // namespace
