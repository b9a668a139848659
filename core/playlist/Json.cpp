#include "core/playlist/Json.h"

#include <algorithm>

namespace json {
namespace {

constexpr int maxDepth = 1000;

/// Where the string ends whose quotation mark is at `start`: at its second one, which no odd number of
/// backslashes precedes, or with the text.
std::size_t endOfString(const std::string& text, std::size_t start) {
    std::size_t end = text.find('"', start + 1);
    while (end != std::string::npos && (end - 1 - text.find_last_not_of('\\', end - 1)) % 2 != 0)
        end = text.find('"', end + 1);
    return std::min(end, text.size());
}

/// The parser recurses once a level.
bool isTooDeep(const std::string& text) {
    int depth = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (c == '"')
            i = endOfString(text, i);
        else if ((c == '[' || c == '{') && ++depth > maxDepth)
            return true;
        else if (c == ']' || c == '}')
            --depth;
    }
    return false;
}

} // namespace

bool parse(const std::string& text, rapidjson::Document& document) {
    if (isTooDeep(text)) return false;
    document.Parse(text.data(), text.size());
    return !document.HasParseError();
}

const rapidjson::Value* member(const rapidjson::Value& object, const char* name) {
    if (!object.IsObject()) return nullptr;
    const auto found = object.FindMember(name);
    return found == object.MemberEnd() ? nullptr : &found->value;
}

const rapidjson::Value* stringMember(const rapidjson::Value& object, const char* name) {
    const rapidjson::Value* value = member(object, name);
    return value && value->IsString() ? value : nullptr;
}

bool takeOptional(const rapidjson::Value& object, const char* name, std::string& field) {
    const rapidjson::Value* value = member(object, name);
    if (!value) return true;
    if (!value->IsString()) return false;
    field = value->GetString();
    return true;
}

} // namespace json
