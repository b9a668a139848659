#include "core/playlist/TaggedFile.h"

TaggedFile::TaggedFile(const std::string& source) : m_stream(source) {
    if (m_stream.isOpen()) m_ref = TagLib::FileRef(&m_stream, true, TagLib::AudioProperties::Average);
}
