#include "core/playlist/Json.h"

namespace json {
namespace {

constexpr int maxDepth = 1000;

/// The parser recurses once a level.
bool isTooDeep(const std::string& text) {
    int depth = 0;
    bool inString = false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (c == '"')
            inString = !inString;
        else if (inString && c == '\\')
            ++i;
        else if (!inString && (c == '[' || c == '{') && ++depth > maxDepth)
            return true;
        else if (!inString && (c == ']' || c == '}'))
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
