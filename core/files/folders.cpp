#include "core/files/folders.h"

#include <cerrno>
#include <cstdlib>
#include <string_view>
#include <sys/stat.h>

namespace fs = std::filesystem;

namespace {

/// The value of an environment variable if it is an absolute path, else empty.
fs::path absolutePathIn(const char* variable) {
    const char* value = std::getenv(variable);
    const fs::path path = value ? value : "";
    return path.is_absolute() ? path : fs::path();
}

} // namespace

bool makeFolder(const fs::path& folder) {
    std::error_code failed;
    if (folder.empty()) return false;
    if (fs::is_directory(folder, failed)) return true;
    if (folder.has_parent_path() && folder.parent_path() != folder && !makeFolder(folder.parent_path()))
        return false;
    if (::mkdir(folder.c_str(), 0700) == 0) return true;
    return errno == EEXIST && fs::is_directory(folder, failed); // another program made it meanwhile
}

fs::path stateFolder() {
    if (const fs::path state = absolutePathIn("XDG_STATE_HOME"); !state.empty()) return state / "tulplayer";
    const fs::path home = absolutePathIn("HOME");
    return home.empty() ? fs::path() : home / ".local/state/tulplayer";
}

fs::path runtimeFolder() {
    const fs::path runtime = absolutePathIn("XDG_RUNTIME_DIR");
    return runtime.empty() ? fs::path() : runtime / "tulplayer";
}

fs::path folderOf(const fs::path& file) {
    return file.has_parent_path() ? file.parent_path() : fs::path(".");
}

fs::path followLinks(const fs::path& path) {
    constexpr int maxLinks = 40; // as the kernel does
    fs::path target = path;
    std::error_code failed;
    for (int i = 0; i < maxLinks && fs::is_symlink(target, failed); ++i) {
        const fs::path link = fs::read_symlink(target, failed);
        target = target.parent_path() / link;
    }
    return target;
}
