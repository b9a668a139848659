#pragma once

#include "core/files/FileDescriptor.h"

#include <string>
#include <taglib/tiostream.h>

/// A regular file that TagLib reads, and only reads. Blocks of the file are kept, because tags are taken in
/// many small steps, and each would be a system call or two. Addresses, folders, pipes and whatever else is
/// no regular file are not open. What is nested so deep that TagLib would run out of stack has no more bytes.
/// To be read by the thread that made it.
class TagFileStream : public TagLib::IOStream {
public:
    explicit TagFileStream(const std::string& source);

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

    std::string m_path;
    FileDescriptor m_file;
    const char* m_stack; ///< Where the reader's stack was at first.
    long m_length = -1;
    long m_position = 0;
    std::string m_block;
    long m_blockStart = 0;
};
