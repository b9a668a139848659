#include "core/files/FolderLock.h"

#include "core/files/folders.h"

#include <cerrno>
#include <chrono>
#include <fcntl.h>
#include <sys/file.h>
#include <thread>

namespace {

using namespace std::chrono_literals;

constexpr auto maxFolderWait = 1s;
constexpr auto retryInterval = 5ms;

int openFolder(const std::filesystem::path& folder) {
    return ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
}

} // namespace

Locking lockFile(const FileDescriptor& file, std::chrono::milliseconds maxWait) {
    const auto end = std::chrono::steady_clock::now() + maxWait;
    while (::flock(file.get(), LOCK_EX | LOCK_NB) != 0) {
        if (errno != EWOULDBLOCK && errno != EINTR) return Locking::impossible;
        if (std::chrono::steady_clock::now() >= end) return Locking::busy;
        std::this_thread::sleep_for(retryInterval);
    }
    return Locking::done;
}

FolderLock::FolderLock(const std::filesystem::path& folder) : m_folder(openFolder(folder)) {
    Locking locking = lockFile(m_folder, maxFolderWait);
    if (locking == Locking::impossible && makeFolder(stateFolder())) {
        m_folder = FileDescriptor(openFolder(stateFolder()));
        locking = lockFile(m_folder, maxFolderWait);
    }
    m_held = locking != Locking::busy;
}
