#include "core/background/besideProgram.h"

#include <filesystem>

std::string besideProgram(const std::string& name) {
    std::error_code unknown;
    const auto folder = std::filesystem::read_symlink("/proc/self/exe", unknown).parent_path();
    const auto beside = folder / name;
    const auto installed = folder.parent_path() / "libexec/tulplayer" / name;
    return std::filesystem::exists(installed, unknown) && !std::filesystem::exists(beside, unknown)
               ? installed.string()
               : beside.string();
}
