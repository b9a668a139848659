#pragma once

#include "core/files/FileDescriptor.h"

#include <string>
#include <taglib/tiostream.h>

/// A read-only stream over a regular file for TagLib. It is buffered, because TagLib reads in many small
/// steps. For anything but a regular file `isOpen` is false.
class TagFileStream : public TagLib::IOStream {
public:
    /// TagLib drops a whole UTF-8 text when it holds an unpaired surrogate. `mendsText` replaces every byte
    /// sequence that encodes one by U+FFFD, which may also hit numbers and pictures.
    TagFileStream(const std::string& path, bool mendsText);

    /// True when the bytes read so far held an encoded surrogate.
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
