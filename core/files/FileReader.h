#pragma once

#include "core/files/FileDescriptor.h"
#include "core/files/FileStatus.h"

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

/// What text in UTF-8 may begin with.
constexpr std::string_view byteOrderMark = "\xef\xbb\xbf";

/// Reads a regular file from its start, a block at a time.
class FileReader {
public:
    /// Does not wait for anything but the disk: what is no regular file is not opened.
    explicit FileReader(const std::string& path);

    /// The next bytes, valid until the next call. Empty at the end, after an error, and when the file has
    /// given `maxBytes`; `status` distinguishes them.
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
