#pragma once

#include "core/files/FileDescriptor.h"

#include <string>
#include <taglib/tiostream.h>

/// A regular file that TagLib reads, and only reads. Blocks of the file are kept, because tags are taken in
/// many small steps, and each would be a system call or two. Folders, pipes and whatever else is no regular
/// file are not open.
class TagFileStream : public TagLib::IOStream {
public:
    /// TagLib takes nothing of a text in UTF-8 of which one character is half a surrogate pair. `mendsText`
    /// puts U+FFFD in the place of what looks like one; numbers and pictures may look like one, too.
    TagFileStream(const std::string& path, bool mendsText);

    /// Whether something looked like half a surrogate pair.
    [[nodiscard]] bool hadBrokenText() const { return m_hadBrokenText; }

    TagLib::FileName name() const override { return m_path.c_str(); }
    bool isOpen() const override { return m_length >= 0; }
    bool readOnly() const override { return true; }
    TagLib::ByteVector readBlock(unsigned long length) override;
    void seek(long offset, Position from) override;
    long tell() const override { return m_position; }
    long length() override { return m_length; }

    void writeBlock(const TagLib::ByteVector& /*data*/) override {}
    void insert(const TagLib::ByteVector& /*data*/, unsigned long /*start*/,
                unsigned long /*replace*/) override {}
    void removeBlock(unsigned long /*start*/, unsigned long /*length*/) override {}
    void truncate(long /*length*/) override {}

private:
    std::size_t readAt(long offset, char* into, std::size_t size) const;
    void keepBlockAt(long offset);
    void mendText(TagLib::ByteVector& bytes);

    std::string m_path;
    FileDescriptor m_file;
    bool m_mendsText;
    bool m_hadBrokenText = false;
    long m_length = -1;
    long m_position = 0;
    std::string m_block;
    long m_blockStart = 0;
};
