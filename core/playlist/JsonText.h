#pragma once

#include "core/files/FileReader.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace json {

/// An input stream of RapidJSON that reads a file, without its byte order mark. Repairs what would make the
/// parser reject the whole text: an unpaired surrogate becomes U+FFFD, and a number outside the range of
/// double becomes 0. A string of more than `maxString` bytes ends the text.
class Text {
public:
    using Ch = char;

    explicit Text(FileReader& file) : m_file(file) {}

    /// The next character; zero at the end.
    [[nodiscard]] char Peek() { return m_next < m_text.size() || refill() ? m_text[m_next] : '\0'; }
    char Take() {
        const char c = Peek();
        ++m_next;
        ++m_taken;
        return c;
    }
    [[nodiscard]] std::size_t Tell() const { return m_taken; }

    /// True when all has been taken. Distinguishes the end from a zero in the file.
    [[nodiscard]] bool isAtEnd() { return m_next >= m_text.size() && !refill(); }

    // Required by RapidJSON's stream concept; called only for parsing in place.
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
    std::string m_held; ///< The escape or number that is incomplete so far.
    std::string m_half; ///< The escape of a high surrogate, until its low surrogate follows.
    std::size_t m_stringLength = 0;
    bool m_started = false;
    bool m_ended = false;
};

} // namespace json
