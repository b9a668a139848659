#include "core/playlist/JsonList.h"

#include "core/playlist/JsonText.h"

#include <limits>
#include <rapidjson/reader.h>

namespace json {
namespace {

constexpr int maxDepth = 1000;

/// Translates RapidJSON's events to calls of the visitor.
class Handler : public rapidjson::BaseReaderHandler<rapidjson::UTF8<>, Handler> {
public:
    explicit Handler(ListVisitor& visitor) : m_visitor(visitor) {}

    [[nodiscard]] bool hasEntries() const { return m_hasEntries; }

    bool Default() { return take({}); } // null, true, false
    bool Int(int number) { return take({.string = {}, .number = number, .integer = number}); }
    bool Uint(unsigned number) {
        const bool fits = number <= static_cast<unsigned>(std::numeric_limits<std::int32_t>::max());
        return fits ? Int(static_cast<int>(number)) : Double(number);
    }
    bool Int64(std::int64_t number) { return Double(static_cast<double>(number)); }
    bool Uint64(std::uint64_t number) { return Double(static_cast<double>(number)); }
    bool Double(double number) { return take({.string = {}, .number = number, .integer = {}}); }
    bool String(const char* text, rapidjson::SizeType /*length*/, bool /*copy*/) {
        return take({.string = text, .number = {}, .integer = {}});
    }

    bool Key(const char* name, rapidjson::SizeType length, bool /*copy*/) {
        if (m_depth == 1 || isInEntry()) m_name.assign(name, length);
        return true;
    }
    bool StartObject() {
        const bool isEntry = m_inEntries && m_depth == 2;
        const bool goesOn = isEntry ? m_visitor.beginEntry() : m_depth == 0 || take({});
        return ++m_depth <= maxDepth && goesOn;
    }
    bool EndObject(rapidjson::SizeType /*members*/) {
        --m_depth;
        return !m_inEntries || m_depth != 2 || m_visitor.endEntry();
    }
    bool StartArray() {
        const bool isEntries = m_depth == 1 && m_name == entriesName && !m_hasEntries;
        const bool goesOn = isEntries || (m_depth > 0 && take({}));
        if (isEntries) m_hasEntries = m_inEntries = true;
        return ++m_depth <= maxDepth && goesOn;
    }
    bool EndArray(rapidjson::SizeType /*elements*/) {
        if (--m_depth == 1) m_inEntries = false;
        return true;
    }

private:
    static constexpr std::string_view entriesName = "entries";

    [[nodiscard]] bool isInEntry() const { return m_inEntries && m_depth == 3; }

    /// `m_depth` is that of the object or array that holds the value.
    bool take(const Value& value) {
        if (m_depth == 0) return false;
        if (isInEntry()) return m_visitor.entryMember(m_name, value);
        if (m_inEntries && m_depth == 2) return m_visitor.beginEntry() && m_visitor.endEntry();
        if (m_depth != 1) return true;
        return m_name == entriesName ? m_hasEntries : m_visitor.rootMember(m_name, value);
    }

    ListVisitor& m_visitor;
    std::string m_name;
    int m_depth = 0;
    bool m_hasEntries = false;
    bool m_inEntries = false;
};

} // namespace

FileStatus readList(const std::string& path, ListVisitor& visitor) {
    FileReader file(path);
    Text text(file);
    Handler handler(visitor);
    rapidjson::Reader reader;
    const bool parsed =
        !reader.Parse<rapidjson::kParseIterativeFlag | rapidjson::kParseNanAndInfFlag>(text, handler)
             .IsError();
    if (file.status() != FileStatus::done) return file.status();
    return parsed && text.isAtEnd() && handler.hasEntries() ? FileStatus::done : FileStatus::malformed;
}

} // namespace json
