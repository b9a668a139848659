#pragma once

#include "core/playlist/TagFileStream.h"

#include <string>
#include <taglib/fileref.h>

namespace tags {

/// A local file opened by TagLib for its tags and audio properties. `ref` is null when it cannot be opened.
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

/// Converts a text to UTF-8: at most `maxTextLetters` characters, up to the first zero. TagLib's own
/// conversion drops a text with an unpaired surrogate; this one replaces that by U+FFFD.
std::string utf8(const TagLib::String& text);

} // namespace tags
