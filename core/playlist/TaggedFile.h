#pragma once

#include "core/playlist/TagFileStream.h"

#include <string>
#include <taglib/fileref.h>

/// A local file opened for its tags and audio properties. What TagFileStream does not open gives a null
/// reference.
class TaggedFile {
public:
    explicit TaggedFile(const std::string& source);

    [[nodiscard]] const TagLib::FileRef& ref() const { return m_ref; }

private:
    TagFileStream m_stream;
    TagLib::FileRef m_ref; // reads from m_stream, so it goes first
};
