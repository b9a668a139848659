#pragma once

#include "core/files/FileDescriptor.h"

#include <filesystem>
#include <string_view>

/// A new file in the folder of the one it is to replace, removed by the destructor unless `replace`
/// succeeded. It stays locked while this object lives, which distinguishes it from those that killed programs
/// left behind.
///
/// A failed operation sets `errno`.
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
    /// Flushes the file to the disk and renames it to `target`, replacing an existing file.
    [[nodiscard]] bool replace(const std::filesystem::path& target);

    /// Removes the temporary files that killed programs left in a folder.
    static void removeStale(const std::filesystem::path& folder);

private:
    std::filesystem::path m_path;
    FileDescriptor m_file;
};

/// Writes all bytes at an offset of a file; false with `errno` on failure.
[[nodiscard]] bool writeAt(const FileDescriptor& file, std::string_view bytes, std::size_t offset);
