#include "core/playlist/TagMessage.h"
#include "core/playlist/TagParser.h"
#include "core/playlist/TulPlaylistEntry.h"

#include <csignal>
#include <exception>
#include <malloc.h>
#include <string>
#include <string_view>
#include <sys/resource.h>
#include <sys/time.h>
#include <unistd.h>

#if defined(__SANITIZE_ADDRESS__)
/// RLIMIT_DATA would count the sanitizer's own memory: use its own limit instead.
extern "C" const char* __asan_default_options() { // NOLINT(bugprone-reserved-identifier): ASan's name
    return "hard_rss_limit_mb=256:detect_leaks=0";
}
#endif

namespace {

using namespace tags;

/// Limit of the data segment: twice the largest picture, and the program's own data.
constexpr rlim_t maxDataBytes = 2 * maxPictureBytes + (rlim_t{2} << 20);
constexpr timeval maxTime{1, 800'000};

void limit(int resource, rlim_t maximum) {
    const rlimit both{maximum, maximum};
    ::setrlimit(resource, &both);
}

void setLimits() {
    limit(RLIMIT_CORE, 0);
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
    limit(RLIMIT_DATA, maxDataBytes);
#endif
    ::mallopt(M_MMAP_THRESHOLD, 128 * 1024); // returns the memory of one file to the system
    sigset_t none;
    ::sigemptyset(&none);
    ::sigprocmask(SIG_SETMASK, &none, nullptr);
    std::signal(SIGPROF, SIG_DFL);
}

/// Starts the time limit of the next file: SIGPROF ends the program.
void limitTime() {
    const itimerval once{{}, maxTime};
    ::setitimer(ITIMER_PROF, &once, nullptr);
}

bool answer(std::string_view question) {
    const std::string path(question.substr(1));
    if (question.front() == static_cast<char>(Question::trackInfo)) {
        const std::optional<TrackInfo> info = parseTrackInfo(path);
        return send(STDIN_FILENO, info ? packed(*info) : std::string());
    }
    if (question.front() == static_cast<char>(Question::details)) {
        const std::optional<FileDetails> details = parseFileDetails(path);
        return send(STDIN_FILENO, details ? packed(*details) : std::string());
    }
    TulPlaylistEntry entry;
    entry.source = path;
    parseCoverArt(entry);
    return send(STDIN_FILENO, {entry.coverArt.get(), static_cast<std::size_t>(entry.coverArtSize)});
}

} // namespace

/// tulplayer-tags: reads files' tags for a player, which sends questions over the socket on standard input.
/// Exits when the player closes the socket, and when a file exceeds the limits.
int main() {
    setLimits();
    try {
        for (auto question = receive(STDIN_FILENO); question; question = receive(STDIN_FILENO)) {
            limitTime();
            if (question->size == 0 || !answer(question->text())) break;
        }
    } catch (const std::exception&) {
        return 1; // TagLib may have leaked memory
    }
    return 0;
}
