#pragma once

#include "core/playlist/TagFileStream.h"

#include <string>
#include <taglib/fileref.h>

namespace tags {

/// A local file opened by TagLib for its tags and audio properties. What TagFileStream does not open gives a
/// null reference.
class TaggedFile {
public:
    explicit TaggedFile(const std::string& path, bool mendsText = false) : m_stream(path, mendsText) {
        if (m_stream.isOpen()) m_ref = TagLib::FileRef(&m_stream, true, TagLib::AudioProperties::Average);
    }
    [[nodiscard]] const TagLib::FileRef& ref() const { return m_ref; }
    [[nodiscard]] bool hadBrokenText() const { return m_stream.hadBrokenText(); }

private:
    TagFileStream m_stream;
    TagLib::FileRef m_ref; // reads from m_stream, so it goes first
};

/// At most `maxTextLetters` letters, up to the first zero character. TagLib holds UTF-16, and converts
/// nothing of a text of which one letter is half a surrogate pair; here U+FFFD takes its place.
std::string utf8(const TagLib::String& text);

} // namespace tags
