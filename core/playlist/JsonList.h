#pragma once

#include "core/files/FileStatus.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

/// Event-driven reading of the core's JSON files: an object with an array "entries" of objects.
namespace json {

/// A member's value; empty for arrays, objects, null, true and false.
struct Value {
    std::optional<std::string_view> string; ///< Up to the first zero character; valid during the call.
    std::optional<double> number;
    std::optional<std::int32_t> integer; ///< Set when the number is an integer and fits.
};

/// Receives the content of a file, in file order. Each call can reject the file by returning false.
class ListVisitor {
public:
    virtual ~ListVisitor() = default;

    /// A member of the root other than "entries". A name can occur more than once.
    virtual bool rootMember(std::string_view name, const Value& value) = 0;
    /// Begins an element of "entries"; one that is not an object has no members.
    virtual bool beginEntry() = 0;
    virtual bool entryMember(std::string_view name, const Value& value) = 0;
    virtual bool endEntry() = 0;
};

/// Reads a file block by block. FileStatus::malformed when it is not valid JSON, has no array "entries" (the
/// first one counts), is rejected by the visitor, is nested deeper than 1000 levels, or holds a string longer
/// than Text::maxString; then the visitor has received what precedes the error.
FileStatus readList(const std::string& path, ListVisitor& visitor);

} // namespace json
