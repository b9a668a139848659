#include "core/files/FolderLock.h"

#include "core/files/folders.h"

#include <cerrno>
#include <chrono>
#include <fcntl.h>
#include <sys/file.h>
#include <thread>

namespace {

using namespace std::chrono_literals;

constexpr auto waitsAtMost = 1s;
constexpr auto triesEvery = 5ms;

int openFolder(const std::filesystem::path& folder) {
    return ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
}

enum class Outcome { locked, busy, impossible };

Outcome lockWithin(int fd) {
    const auto end = std::chrono::steady_clock::now() + waitsAtMost;
    while (::flock(fd, LOCK_EX | LOCK_NB) != 0) {
        if (errno != EWOULDBLOCK && errno != EINTR) return Outcome::impossible;
        if (std::chrono::steady_clock::now() > end) return Outcome::busy;
        std::this_thread::sleep_for(triesEvery);
    }
    return Outcome::locked;
}

} // namespace

FolderLock::FolderLock(const std::filesystem::path& folder) : m_folder(openFolder(folder)) {
    Outcome outcome = lockWithin(m_folder.get());
    if (outcome == Outcome::impossible && makeFolder(stateFolder())) {
        m_folder = FileDescriptor(openFolder(stateFolder()));
        outcome = lockWithin(m_folder.get());
    }
    m_held = outcome != Outcome::busy;
}
