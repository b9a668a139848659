#pragma once

#include "core/files/FileReader.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace json {

/// The text of a file as RapidJSON's reader takes its input, without a byte order mark. What would make the
/// parser give up the whole text is mended on the way: half of a surrogate pair becomes U+FFFD, and a number
/// that no double holds becomes 0. A string of more than `maxString` bytes ends the text.
class Text {
public:
    using Ch = char;

    explicit Text(FileReader& file) : m_file(file) {}

    /// Zero at the end.
    [[nodiscard]] char Peek() { return m_next < m_text.size() || refill() ? m_text[m_next] : '\0'; }
    char Take() {
        const char c = Peek();
        ++m_next;
        ++m_taken;
        return c;
    }
    [[nodiscard]] std::size_t Tell() const { return m_taken; }

    /// Whether all of it has been taken: a zero can be part of the file.
    [[nodiscard]] bool isAtEnd() { return m_next >= m_text.size() && !refill(); }

    // RapidJSON names them, for parsing in place, and calls none of them here.
    static char* PutBegin() { return nullptr; }
    static void Put(char /*c*/) {}
    static void Flush() {}
    static std::size_t PutEnd(char* /*begin*/) { return 0; }

    static constexpr std::size_t maxString = std::size_t{4} << 20;

private:
    enum class State { between, inNumber, inString, afterBackslash, inUnicode };

    bool refill();
    void accept(char c);
    void acceptInString(char c);
    void endUnicode();
    void endNumber();
    void dropHalf();

    FileReader& m_file;
    std::string m_text;
    std::size_t m_next = 0;
    std::size_t m_taken = 0;
    State m_state = State::between;
    std::string m_held; ///< The escape or number that has begun.
    std::string m_half; ///< The escape of a high surrogate, until it is known what follows.
    std::size_t m_stringLength = 0;
    bool m_started = false;
    bool m_ended = false;
};

} // namespace json
