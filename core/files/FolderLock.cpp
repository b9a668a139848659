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

} // namespace

Locking lockFile(const FileDescriptor& file, std::chrono::milliseconds waitsAtMost) {
    const auto end = std::chrono::steady_clock::now() + waitsAtMost;
    while (::flock(file.get(), LOCK_EX | LOCK_NB) != 0) {
        if (errno != EWOULDBLOCK && errno != EINTR) return Locking::impossible;
        if (std::chrono::steady_clock::now() >= end) return Locking::busy;
        std::this_thread::sleep_for(triesEvery);
    }
    return Locking::done;
}

FolderLock::FolderLock(const std::filesystem::path& folder) : m_folder(openFolder(folder)) {
    Locking locking = lockFile(m_folder, waitsAtMost);
    if (locking == Locking::impossible && makeFolder(stateFolder())) {
        m_folder = FileDescriptor(openFolder(stateFolder()));
        locking = lockFile(m_folder, waitsAtMost);
    }
    m_held = locking != Locking::busy;
}
