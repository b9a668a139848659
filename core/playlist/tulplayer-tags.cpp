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
/// The sanitizers' own memory counts as data: they are given a limit of their own.
extern "C" const char* __asan_default_options() { // NOLINT(bugprone-reserved-identifier): ASan's name
    return "hard_rss_limit_mb=256:detect_leaks=0";
}
#endif

namespace {

using namespace tags;

/// What reading one file may take: twice the longest picture, and what the program has without a file.
constexpr rlim_t maxDataBytes = 2 * maxPictureBytes + (rlim_t{2} << 20);
constexpr timeval maxTime{1, 800'000};

void limit(int resource, rlim_t most) {
    const rlimit both{most, most};
    ::setrlimit(resource, &both);
}

void setLimits() {
    limit(RLIMIT_CORE, 0);
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
    limit(RLIMIT_DATA, maxDataBytes);
#endif
    ::mallopt(M_MMAP_THRESHOLD, 128 * 1024); // gives back what one file has taken
    sigset_t none;
    ::sigemptyset(&none);
    ::sigprocmask(SIG_SETMASK, &none, nullptr);
    std::signal(SIGPROF, SIG_DFL);
}

/// Ends the program when the next file takes more.
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

/// tulplayer-tags: reads the tags of one file after the other for a player, whose questions come from the
/// socket that is the standard input. It ends with the player, and whenever a file takes more than it may
/// have.
int main() {
    setLimits();
    try {
        for (auto question = receive(STDIN_FILENO); question; question = receive(STDIN_FILENO)) {
            limitTime();
            if (question->size == 0 || !answer(question->text())) break;
        }
    } catch (const std::exception&) {
        return 1; // what was read of the file is lost memory
    }
    return 0;
}
