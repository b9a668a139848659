#pragma once

#include "core/files/FileDescriptor.h"
#include "core/files/FileStatus.h"

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

/// The UTF-8 byte order mark, which a text file may begin with.
constexpr std::string_view byteOrderMark = "\xef\xbb\xbf";

/// Reads a regular file from its start, a block at a time.
class FileReader {
public:
    /// Reads regular files only (FileStatus::notAllowed for others), so that it waits for nothing but the
    /// disk.
    explicit FileReader(const std::string& path);

    /// The next bytes, valid until the next call. Empty at the end of the file, after an error, and beyond
    /// `maxBytes`; `status` says which.
    std::string_view next();
    /// FileStatus::tooLarge for a file of more than `maxBytes`.
    [[nodiscard]] FileStatus status() const { return m_status; }

    static constexpr std::size_t maxBytes = std::size_t{256} << 20;

private:
    FileDescriptor m_file;
    FileStatus m_status;
    std::unique_ptr<char[]> m_block;
    std::size_t m_count = 0;
};
