#include "core/files/readFile.h"

#include "core/files/FileReader.h"

std::optional<std::string> readFile(const std::string& path, FileStatus& status) {
    FileReader reader(path);
    std::string bytes;
    for (std::string_view block = reader.next(); !block.empty(); block = reader.next())
        bytes += block;
    status = reader.status();
    if (status != FileStatus::done) return std::nullopt;
    return bytes;
}
