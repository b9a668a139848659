#pragma once

#include "core/files/FileStatus.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

/// What the JSON files of the core have in common: an object with some members, one of which is the array
/// "entries" of objects.
namespace json {

/// A member's value; of arrays, objects, null, true and false nothing is kept.
struct Value {
    std::optional<std::string_view> string; ///< Up to its first zero character; valid during the call.
    std::optional<double> number;
    std::optional<std::int32_t> integer; ///< A number that is written as one and fits.
};

/// Receives what a file holds, in its order. Each call can reject the file by returning false.
class ListVisitor {
public:
    virtual ~ListVisitor() = default;

    /// A member of the root; a name can come more than once. "entries" is not among them.
    virtual bool rootMember(std::string_view name, const Value& value) = 0;
    /// An element of "entries" begins; one that is no object has no members.
    virtual bool beginEntry() = 0;
    virtual bool entryMember(std::string_view name, const Value& value) = 0;
    virtual bool endEntry() = 0;
};

/// Reads a file without holding it in memory. FileStatus::malformed for what is not valid JSON, has no array
/// "entries" (of several the first counts), is rejected, is nested deeper than 1000 levels, or holds a string
/// of megabytes. Then the visitor has been told what comes before.
FileStatus readList(const std::string& path, ListVisitor& visitor);

} // namespace json
