// read-mutants FIRST COUNT STEP FOLDER FILE...: reads damaged copies of the files, of the numbers FIRST,
// FIRST + STEP and so on below COUNT, and the files themselves, as the player would: tags, picture, sound,
// playlist. FOLDER is for the copies. The sanitizers that it is built with end it at what they find, with the
// damaged copy left in FOLDER; what takes more memory or time than it may is printed.
#include "core/playlist/TagParser.h"
#include "core/playlist/TulPlaylistFileFactory.h"
#include "platform/bass/source/Source.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <new>
#include <random>
#include <string>
#include <vector>

extern "C" { // <sanitizer/allocator_interface.h> declares these where there is one
int __sanitizer_install_malloc_and_free_hooks(void (*)(const volatile void*, std::size_t),
                                              void (*)(const volatile void*));
std::size_t __sanitizer_get_allocated_size(const volatile void*);
}

namespace {

namespace fs = std::filesystem;

constexpr double maxMegabytes = 64;
constexpr double maxSeconds = 2;
constexpr std::int64_t maxFrames = 3LL * 44100;

std::atomic<std::int64_t> held{0};
std::atomic<std::int64_t> peak{0};

void countAllocated(const volatile void*, std::size_t size) {
    const std::int64_t now = held += static_cast<std::int64_t>(size);
    if (now > peak) peak = now;
}

void countFreed(const volatile void* memory) {
    if (memory) held -= static_cast<std::int64_t>(__sanitizer_get_allocated_size(memory));
}

struct Measured {
    double megabytes = 0;
    double seconds = 0; ///< Of processor time.
};

template <typename Work> Measured measure(const Work& work) {
    const std::int64_t before = held;
    peak = before;
    const std::clock_t start = std::clock();
    work();
    return {static_cast<double>(peak - before) / (1 << 20),
            static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC};
}

void readTags(const std::string& path) {
    try {
        static_cast<void>(tags::parseTrackInfo(path));
        TulPlaylistEntry entry;
        entry.source = path;
        tags::parseCoverArt(entry);
    } catch (const std::bad_alloc&) {
        // The program that reads tags ends by it.
    }
}

void decode(const std::string& path) {
    const auto opened = bass::openFile(path, bass::Format::any, std::make_shared<bass::Cancel>());
    if (!opened.source) return;
    std::vector<float> block(std::size_t{4096} * 2);
    const auto readFrames = [&](std::int64_t frames) {
        for (std::int64_t read = 0; read < frames;) {
            const bass::ReadResult result = opened.source->read(block);
            read += static_cast<std::int64_t>(result.frames);
            if (result.status != bass::ReadResult::Status::more) break;
        }
    };
    readFrames(maxFrames / 2);
    static_cast<void>(opened.source->seek(1000));
    readFrames(maxFrames / 2);
}

void readList(const std::string& path) {
    FileStatus status{};
    static_cast<void>(TulPlaylistFileFactory().createPlaylistFile(path)->read(path, status));
}

/// Random and malicious damage, half of it at the start, where the headers are.
std::string damaged(std::string bytes, std::mt19937& random) {
    const auto below = [&](std::size_t most) { return most == 0 ? 0 : random() % most; };
    const auto place = [&] {
        return below(random() % 2 ? bytes.size() : std::min<std::size_t>(bytes.size(), 2048));
    };
    for (auto faults = 1U << random() % 6; faults > 0 && !bytes.empty(); --faults) {
        switch (random() % 7) {
        case 0:
            bytes[place()] = static_cast<char>(random());
            break;
        case 1:
            bytes[place()] ^= static_cast<char>(1U << random() % 8);
            break;
        case 2: { // a number that is absurd, or nearly
            constexpr unsigned char numbers[][4] = {
                {0xff, 0xff, 0xff, 0xff}, {0x7f, 0xff, 0xff, 0xff}, {0, 0, 0, 0},       {0x80, 0, 0, 0},
                {0x7f, 0x7f, 0x7f, 0x7f}, {0xff, 0xff, 0xff, 0x7f}, {0, 0xff, 0xff, 0}, {0, 0, 0, 0x10}};
            const auto& number = numbers[random() % std::size(numbers)];
            const std::size_t at = place();
            for (std::size_t i = 0; i < 4 && at + i < bytes.size(); ++i)
                bytes[at + i] = static_cast<char>(number[i]);
            break;
        }
        case 3:
            bytes.erase(place(), below(64));
            break;
        case 4:
            bytes.insert(place(), bytes.substr(place(), below(512)));
            break;
        case 5:
            if (random() % 8 == 0) bytes.resize(place());
            break;
        default: {
            const std::string piece = bytes.substr(place(), below(128));
            const std::size_t at = place();
            bytes.replace(at, std::min(piece.size(), bytes.size() - at), piece);
        }
        }
    }
    return bytes;
}

std::string contentOf(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

class Run {
public:
    explicit Run(const fs::path& folder) : m_folder(folder) {}

    void read(const std::string& name, const fs::path& path) {
        ++m_count;
        constexpr std::array lists = {".m3u", ".pls", ".tuq"};
        if (std::ranges::find(lists, path.extension()) != lists.end())
            return note("playlist", name, measure([&] { readList(path); }));
        noteTags(name, measure([&] { readTags(path); }));
        note("sound", name, measure([&] { decode(path); }));
    }
    void readDamaged(const fs::path& original, unsigned number) {
        std::mt19937 random(number);
        const fs::path copy = m_folder / ("mutant" + original.extension().string());
        std::ofstream(copy, std::ios::binary) << damaged(contentOf(original), random);
        read(original.filename().string() + " " + std::to_string(number), copy);
        fs::remove(copy);
    }
    int report() const {
        for (const auto& [stage, most] : m_most)
            std::printf("%s: at most %.1f MB, %.2f s\n", stage.c_str(), most.megabytes, most.seconds);
        std::printf("%d files read, %d above %g MB or %g s; of %d the limits of the program end the reading "
                    "of tags\n",
                    m_count, m_findings, maxMegabytes, maxSeconds, m_endedTags);
        return m_findings == 0 ? 0 : 1;
    }

private:
    /// Read here, and not by the program whose limits end what takes more.
    void noteTags(const std::string& name, const Measured& measured) {
        if (isLittle(measured)) return note("tags", name, measured);
        ++m_endedTags;
        std::printf("tags of %s: %.1f MB, %.2f s\n", name.c_str(), measured.megabytes, measured.seconds);
    }
    static bool isLittle(const Measured& measured) {
        return measured.megabytes <= maxMegabytes && measured.seconds <= maxSeconds;
    }
    void note(const char* stage, const std::string& name, const Measured& measured) {
        Measured& most = m_most[stage];
        most.megabytes = std::max(most.megabytes, measured.megabytes);
        most.seconds = std::max(most.seconds, measured.seconds);
        if (isLittle(measured)) return;
        ++m_findings;
        std::printf("%s of %s: %.1f MB, %.2f s\n", stage, name.c_str(), measured.megabytes, measured.seconds);
    }

    fs::path m_folder;
    std::map<std::string, Measured> m_most;
    int m_count = 0;
    int m_findings = 0;
    int m_endedTags = 0;
};

} // namespace

int main(int argc, char** argv) {
    if (argc < 6) return 2;
    const auto number = [&](int argument) { return static_cast<unsigned>(std::atol(argv[argument])); };
    const std::vector<fs::path> files(argv + 5, argv + argc);
    std::setvbuf(stdout, nullptr, _IOLBF, BUFSIZ);
    __sanitizer_install_malloc_and_free_hooks(countAllocated, countFreed);
    Run run(argv[4]);
    for (const fs::path& file : files)
        run.read(file.filename().string(), file);
    for (unsigned mutant = number(1); mutant < number(2); mutant += number(3))
        run.readDamaged(files[mutant % files.size()], mutant);
    return run.report();
}
