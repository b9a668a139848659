#include "core/playlist/UnsavedLists.h"

#include "core/files/folders.h"
#include "core/files/replaceFile.h"
#include "core/playlist/TulPlaylist.h"
#include "core/playlist/UnsavedListDocument.h"

#include <algorithm>
#include <fcntl.h>
#include <random>
#include <set>
#include <sys/file.h>
#include <sys/stat.h>
#include <utility>

namespace fs = std::filesystem;

namespace {

constexpr int maxPrograms = 256;
constexpr std::size_t maxNameless = 10;
constexpr const char* extension = ".tuq";
constexpr const char* asidePrefix = "list-";
constexpr const char* separatePrefix = "other-"; // marks separate lists by their names
constexpr const char* slotPrefix = "shown-";

void removeFile(const fs::path& path) {
    std::error_code failed;
    fs::remove(path, failed);
}

void renameFile(const fs::path& from, const fs::path& to) {
    std::error_code failed;
    fs::rename(from, to, failed);
}

} // namespace

UnsavedLists::UnsavedLists(fs::path folder) : m_folder(std::move(folder)) {}

std::string UnsavedLists::newId() {
    std::random_device random;
    const std::uint64_t number = (std::uint64_t{random()} << 32) | random();
    return asidePrefix + std::to_string(number);
}

fs::path UnsavedLists::pathOf(const std::string& id) const {
    return m_folder / (id + extension);
}

fs::path UnsavedLists::slotPath(int number) const {
    return pathOf(slotPrefix + std::to_string(number));
}

fs::path UnsavedLists::slotLockPath(int number) const {
    return m_folder / (slotPrefix + std::to_string(number) + ".lock");
}

/// Locks a slot. Not open when another program holds it.
FileDescriptor UnsavedLists::lockSlot(int number) const {
    FileDescriptor file(::open(slotLockPath(number).c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
    if (file.isOpen() && ::flock(file.get(), LOCK_EX | LOCK_NB) != 0) return FileDescriptor();
    return file;
}

/// False when the folder was removed meanwhile.
bool UnsavedLists::holdsSlot() const {
    struct stat held {};
    struct stat there {};
    return m_slot != 0 && ::fstat(m_slotLock.get(), &held) == 0 &&
           ::stat(slotLockPath(m_slot).c_str(), &there) == 0 && held.st_ino == there.st_ino;
}

bool UnsavedLists::claimSlot(const Lock& lock) {
    if (holdsSlot()) return true;
    m_slot = 0;
    if (m_folder.empty() || !makeFolder(m_folder)) return false;
    for (int number = 1; number <= maxPrograms && m_slot == 0; ++number) {
        m_slotLock = lockSlot(number);
        if (m_slotLock.isOpen()) m_slot = number;
    }
    if (m_slot == 0) return false;
    renameFile(slotPath(m_slot), pathOf(newId())); // left by a killed program
    setAsideAbandoned(lock);
    return true;
}

/// Sets aside the lists in the slots of killed programs.
void UnsavedLists::setAsideAbandoned(const Lock& /*lock*/) {
    std::error_code failed;
    for (int number = 1; number <= maxPrograms; ++number) {
        if (number == m_slot || !fs::exists(slotPath(number), failed)) continue;
        const FileDescriptor lock = lockSlot(number);
        if (lock.isOpen()) renameFile(slotPath(number), pathOf(newId()));
    }
}

FileStatus UnsavedLists::store(const std::string& text, const std::string& restoredFrom) {
    const Lock lock(m_mutex);
    if (!claimSlot(lock)) return m_folder.empty() ? FileStatus::done : FileStatus::notAllowed;
    const FileStatus status = replaceFile(slotPath(m_slot), text);
    if (status == FileStatus::done && !restoredFrom.empty()) removeFile(pathOf(restoredFrom));
    return status;
}

void UnsavedLists::setAside(const std::string& id) {
    const Lock lock(m_mutex);
    if (m_slot != 0) renameFile(slotPath(m_slot), pathOf(id));
}

void UnsavedLists::remove(const std::string& id) {
    const Lock lock(m_mutex);
    if (!id.empty())
        removeFile(pathOf(id));
    else if (m_slot != 0)
        removeFile(slotPath(m_slot));
}

void UnsavedLists::separateFrom(const std::string& file) {
    for (const UnsavedList& list : readHeaders())
        if (list.file == file && !list.isSeparate)
            renameFile(pathOf(list.id),
                       pathOf(separatePrefix + list.id.substr(std::string(asidePrefix).size())));
}

std::unique_ptr<TulPlaylist> UnsavedLists::read(const std::string& id) const {
    return UnsavedListDocument::read(pathOf(id));
}

std::vector<UnsavedList> UnsavedLists::readHeaders() const {
    std::vector<UnsavedList> lists;
    std::error_code failed;
    for (fs::directory_iterator file(m_folder, failed); !failed && file != fs::end(file);
         file.increment(failed)) {
        const std::string id = file->path().stem();
        std::error_code unknown;
        if (!file->is_regular_file(unknown)) continue;
        const bool isSeparate = id.starts_with(separatePrefix);
        if (file->path().extension() != extension || !(isSeparate || id.starts_with(asidePrefix))) continue;
        if (auto header = UnsavedListDocument::readHeader(file->path()))
            lists.push_back(
                {id, std::move(header->file), std::move(header->name), header->changedAt, isSeparate});
    }
    std::ranges::sort(lists, [](const auto& one, const auto& other) {
        return std::pair(-one.changedAt, one.id) < std::pair(-other.changedAt, other.id);
    });
    return lists;
}

std::vector<UnsavedList> UnsavedLists::list() {
    const Lock lock(m_mutex);
    std::error_code failed;
    if (fs::is_directory(m_folder, failed)) claimSlot(lock);
    auto lists = readHeaders();
    std::set<std::string> files;
    for (UnsavedList& each : lists)
        if (!each.file.empty() && !each.isSeparate) each.isSeparate = !files.insert(each.file).second;

    std::size_t nameless = 0;
    std::erase_if(lists, [&](const UnsavedList& each) {
        const bool isSurplus = each.file.empty() && each.name.empty() && ++nameless > maxNameless;
        if (isSurplus) removeFile(pathOf(each.id));
        return isSurplus;
    });
    return lists;
}
