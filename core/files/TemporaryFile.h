#pragma once

#include "core/files/FileDescriptor.h"

#include <filesystem>
#include <string_view>

/// A new file beside the one that it is to replace. Removed again unless it takes that one's place. It is
/// locked as long as this lives, unlike those that killed programs have left.
///
/// Where an operation fails, `errno` says why.
class TemporaryFile {
public:
    explicit TemporaryFile(const std::filesystem::path& folder);
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;
    ~TemporaryFile();

    [[nodiscard]] bool isOpen() const { return m_file.isOpen(); }
    [[nodiscard]] const FileDescriptor& file() const { return m_file; }

    /// Appends all of the bytes.
    [[nodiscard]] bool write(std::string_view bytes) const;
    /// Brings the file to the disk and gives it the name, which another may have until then.
    [[nodiscard]] bool replace(const std::filesystem::path& target);

    /// Removes from a folder those that killed programs have left.
    static void removeLeftOver(const std::filesystem::path& folder);

private:
    std::filesystem::path m_path;
    FileDescriptor m_file;
};

/// Writes all of the bytes at this place of a file; false, with `errno`, when that fails.
[[nodiscard]] bool writeAt(const FileDescriptor& file, std::string_view bytes, std::size_t offset);
