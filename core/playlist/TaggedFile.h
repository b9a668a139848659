#pragma once

#include <optional>
#include <string>
#include <taglib/fileref.h>
#include <taglib/tfilestream.h>

/// A local file opened, read-only, for its tags and audio properties. Addresses, folders, pipes and whatever
/// else is no regular file give a null reference, without being opened.
class TaggedFile {
public:
    explicit TaggedFile(const std::string& source);

    [[nodiscard]] const TagLib::FileRef& ref() const { return m_ref; }

private:
    std::optional<TagLib::FileStream> m_stream;
    TagLib::FileRef m_ref; // reads from m_stream, so it goes first
};
