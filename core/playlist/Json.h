#pragma once

#include <rapidjson/document.h>
#include <string>

/// What the JSON files of the core have in common.
namespace json {

/// Parses one JSON text, with or without a byte order mark. False when it is not valid, or nested deeper than
/// any file of ours: 1000 levels.
[[nodiscard]] bool parse(const std::string& text, rapidjson::Document& document);

/// The first member of that name; null when there is none, or `object` is not an object.
const rapidjson::Value* member(const rapidjson::Value& object, const char* name);
/// The same, but null also when it is not a string.
const rapidjson::Value* stringMember(const rapidjson::Value& object, const char* name);
/// Puts the string up to its first zero character into `field` if the member is there; false when it is not a
/// string.
bool takeOptional(const rapidjson::Value& object, const char* name, std::string& field);

} // namespace json
