#include "core/background/besideProgram.h"

#include <filesystem>

std::string besideProgram(const std::string& name) {
    std::error_code unknown;
    return std::filesystem::read_symlink("/proc/self/exe", unknown).replace_filename(name).string();
}
