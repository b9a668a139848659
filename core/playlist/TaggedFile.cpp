#include "core/playlist/TaggedFile.h"

#include <filesystem>

TaggedFile::TaggedFile(const std::string& source) {
    if (source.find("://") != std::string::npos) return;
    std::error_code ignored;
    if (!std::filesystem::is_regular_file(source, ignored)) return;

    m_stream.emplace(source.c_str(), true);
    if (m_stream->isOpen()) m_ref = TagLib::FileRef(&*m_stream, true, TagLib::AudioProperties::Average);
}
