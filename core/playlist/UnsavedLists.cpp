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
constexpr const char* separatePrefix = "other-"; // so that a name says it without being read
constexpr const char* placePrefix = "shown-";

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

fs::path UnsavedLists::place(int number) const {
    return pathOf(placePrefix + std::to_string(number));
}

fs::path UnsavedLists::lockOf(int number) const {
    return m_folder / (placePrefix + std::to_string(number) + ".lock");
}

/// Not open when another program holds it.
FileDescriptor UnsavedLists::lockPlace(int number) const {
    FileDescriptor file(::open(lockOf(number).c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
    if (file.isOpen() && ::flock(file.get(), LOCK_EX | LOCK_NB) != 0) return FileDescriptor();
    return file;
}

/// Not when the folder has been removed meanwhile.
bool UnsavedLists::holdsPlace() const {
    struct stat held {};
    struct stat there {};
    return m_place != 0 && ::fstat(m_placeLock.get(), &held) == 0 &&
           ::stat(lockOf(m_place).c_str(), &there) == 0 && held.st_ino == there.st_ino;
}

bool UnsavedLists::claimPlace(const Lock& lock) {
    if (holdsPlace()) return true;
    m_place = 0;
    if (m_folder.empty() || !makeFolder(m_folder)) return false;
    for (int number = 1; number <= maxPrograms && m_place == 0; ++number) {
        m_placeLock = lockPlace(number);
        if (m_placeLock.isOpen()) m_place = number;
    }
    if (m_place == 0) return false;
    renameFile(place(m_place), pathOf(newId())); // of a program that was killed
    setAsideAbandoned(lock);
    return true;
}

/// The places of other programs that were killed.
void UnsavedLists::setAsideAbandoned(const Lock& /*lock*/) {
    std::error_code failed;
    for (int number = 1; number <= maxPrograms; ++number) {
        if (number == m_place || !fs::exists(place(number), failed)) continue;
        const FileDescriptor lock = lockPlace(number);
        if (lock.isOpen()) renameFile(place(number), pathOf(newId()));
    }
}

FileStatus UnsavedLists::store(const std::string& text, const std::string& takenUpFrom) {
    const Lock lock(m_mutex);
    if (!claimPlace(lock)) return m_folder.empty() ? FileStatus::done : FileStatus::notAllowed;
    const FileStatus status = replaceFile(place(m_place), text);
    if (status == FileStatus::done && !takenUpFrom.empty()) removeFile(pathOf(takenUpFrom));
    return status;
}

void UnsavedLists::setAside(const std::string& id) {
    const Lock lock(m_mutex);
    if (m_place != 0) renameFile(place(m_place), pathOf(id));
}

void UnsavedLists::remove(const std::string& id) {
    const Lock lock(m_mutex);
    if (!id.empty())
        removeFile(pathOf(id));
    else if (m_place != 0)
        removeFile(place(m_place));
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
    if (fs::is_directory(m_folder, failed)) claimPlace(lock);
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
