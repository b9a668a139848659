#include "core/playlist/FileDetails.h"

#include "core/playlist/TagFields.h"
#include "core/playlist/TagProgram.h"

namespace {

std::string textOf(std::optional<float> gain) {
    return gain ? std::to_string(*gain) : std::string();
}

std::optional<float> takeGain(std::string_view& fields) {
    std::string_view text = tags::takeText(fields);
    return text.empty() ? std::nullopt : std::optional(tags::takeNumber<float>(text));
}

} // namespace

std::optional<FileDetails> readFileDetails(const std::string& source) {
    const tags::Message answer = tags::ask(tags::Question::details, source);
    std::string_view fields = answer.text();
    if (fields.empty()) return std::nullopt;
    FileDetails details;
    details.format = tags::takeText(fields);
    details.sampleRate = tags::takeNumber<int>(fields);
    details.channels = tags::takeNumber<int>(fields);
    details.bitsPerSample = tags::takeNumber<int>(fields);
    details.bitRate = tags::takeNumber<int>(fields);
    details.length = tags::takeNumber<double>(fields);
    details.trackGain = takeGain(fields);
    details.albumGain = takeGain(fields);
    details.size = tags::takeNumber<std::uint64_t>(fields);
    while (!fields.empty()) {
        const std::string_view name = tags::takeText(fields);
        details.tags.emplace_back(name, tags::takeText(fields));
    }
    return details;
}

std::string packed(const FileDetails& details) {
    std::string fields;
    tags::addFields(fields, details.format, std::to_string(details.sampleRate),
                    std::to_string(details.channels), std::to_string(details.bitsPerSample),
                    std::to_string(details.bitRate), std::to_string(details.length),
                    textOf(details.trackGain), textOf(details.albumGain), std::to_string(details.size));
    for (const auto& [name, text] : details.tags)
        tags::addFields(fields, name, text);
    return fields;
}
