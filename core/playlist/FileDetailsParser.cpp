#include "core/playlist/FileDetails.h"
#include "core/playlist/TagParser.h"
#include "core/playlist/TaggedFile.h"
#include "platform/bass/replaygain.h"

#include <filesystem>
#include <system_error>
#include <taglib/aifffile.h>
#include <taglib/apefile.h>
#include <taglib/flacfile.h>
#include <taglib/mp4file.h>
#include <taglib/mpegfile.h>
#include <taglib/oggflacfile.h>
#include <taglib/opusfile.h>
#include <taglib/speexfile.h>
#include <taglib/tpropertymap.h>
#include <taglib/vorbisfile.h>
#include <taglib/wavfile.h>
#include <taglib/wavpackfile.h>

namespace tags {
namespace {

constexpr double millisecondsPerSecond = 1000;

/// TagLib's names of the tags that are shown, and the names shown for them.
constexpr std::pair<const char*, const char*> shownTags[] = {
    {"TITLE", "Title"},       {"ARTIST", "Artist"},   {"ALBUM", "Album"}, {"ALBUMARTIST", "By"},
    {"TRACKNUMBER", "Track"}, {"DISCNUMBER", "Disc"}, {"DATE", "Year"},   {"GENRE", "Genre"},
    {"COMPOSER", "Composer"}, {"COMMENT", "Comment"},
};

/// The common name of an MPEG layer, like "MP3".
std::string nameOf(const TagLib::MPEG::Properties& properties) {
    return properties.layer() == 0 ? "MPEG audio" : "MP" + std::to_string(properties.layer());
}

std::string nameOf(TagLib::MP4::Properties::Codec codec) {
    if (codec == TagLib::MP4::Properties::AAC) return "AAC";
    return codec == TagLib::MP4::Properties::ALAC ? "ALAC" : "MP4";
}

/// Format and bits per sample, which each of TagLib's property classes keeps in its own way.
void takeFormat(TagLib::File& file, FileDetails& details) {
    const auto take = [&](std::string format, int bitsPerSample) {
        details.format = std::move(format);
        details.bitsPerSample = bitsPerSample;
    };
    if (auto* flac = dynamic_cast<TagLib::FLAC::File*>(&file))
        take("FLAC", flac->audioProperties()->bitsPerSample());
    else if (auto* oggFlac = dynamic_cast<TagLib::Ogg::FLAC::File*>(&file))
        take("Ogg FLAC", oggFlac->audioProperties()->bitsPerSample());
    else if (auto* wav = dynamic_cast<TagLib::RIFF::WAV::File*>(&file))
        take("WAV", wav->audioProperties()->bitsPerSample());
    else if (auto* aiff = dynamic_cast<TagLib::RIFF::AIFF::File*>(&file))
        take("AIFF", aiff->audioProperties()->bitsPerSample());
    else if (auto* ape = dynamic_cast<TagLib::APE::File*>(&file))
        take("Monkey's Audio", ape->audioProperties()->bitsPerSample());
    else if (auto* wavPack = dynamic_cast<TagLib::WavPack::File*>(&file))
        take("WavPack", wavPack->audioProperties()->bitsPerSample());
    else if (auto* mpeg = dynamic_cast<TagLib::MPEG::File*>(&file))
        take(nameOf(*mpeg->audioProperties()), 0);
    else if (auto* mp4 = dynamic_cast<TagLib::MP4::File*>(&file))
        take(nameOf(mp4->audioProperties()->codec()),
             mp4->audioProperties()->codec() == TagLib::MP4::Properties::ALAC
                 ? mp4->audioProperties()->bitsPerSample()
                 : 0);
    else if (dynamic_cast<TagLib::Ogg::Vorbis::File*>(&file))
        take("Ogg Vorbis", 0);
    else if (dynamic_cast<TagLib::Ogg::Opus::File*>(&file))
        take("Opus", 0);
    else if (dynamic_cast<TagLib::Ogg::Speex::File*>(&file))
        take("Speex", 0);
}

void takeTags(const TagLib::PropertyMap& properties, FileDetails& details) {
    for (const auto& [name, shown] : shownTags) {
        const auto found = properties.find(name);
        if (found == properties.end() || found->second.isEmpty()) continue;
        const std::string text = utf8(found->second.toString(", ").stripWhiteSpace());
        if (!text.empty()) details.tags.emplace_back(shown, text);
    }
}

/// The text of a ReplayGain tag. In MP4 files its name has a prefix.
std::optional<std::string> gainText(TagLib::File& file, const TagLib::PropertyMap& properties,
                                    const TagLib::String& key) {
    if (const auto found = properties.find(key); found != properties.end())
        return utf8(found->second.toString(", "));
    const auto* mp4 = dynamic_cast<TagLib::MP4::File*>(&file);
    if (!mp4 || !mp4->tag()) return std::nullopt;
    for (const auto& [name, item] : mp4->tag()->itemMap())
        if (name.startsWith("----:") && name.upper().to8Bit().ends_with(":" + key.to8Bit()))
            return utf8(item.toStringList().toString(", "));
    return std::nullopt;
}

void takeGains(TagLib::File& file, const TagLib::PropertyMap& properties, FileDetails& details) {
    bass::ReplayGain gain;
    for (const char* key : bass::replayGainKeys)
        if (const auto text = gainText(file, properties, key)) gain.take(key, *text);
    details.trackGain = gain.trackGain;
    details.albumGain = gain.albumGain;
}

} // namespace

std::optional<FileDetails> parseFileDetails(const std::string& path) {
    const TaggedFile tagged(path);
    TagLib::File* const file = tagged.ref().file();
    if (!file || !file->audioProperties()) return std::nullopt;
    const TagLib::AudioProperties& properties = *file->audioProperties();
    FileDetails details{.format = {},
                        .sampleRate = properties.sampleRate(),
                        .channels = properties.channels(),
                        .bitRate = properties.bitrate(),
                        .length = properties.lengthInMilliseconds() / millisecondsPerSecond,
                        .trackGain = {},
                        .albumGain = {},
                        .tags = {}};
    takeFormat(*file, details);
    const TagLib::PropertyMap tags = file->properties();
    takeTags(tags, details);
    takeGains(*file, tags, details);
    std::error_code unknown;
    const auto size = std::filesystem::file_size(path, unknown);
    if (!unknown) details.size = size;
    return details;
}

} // namespace tags
