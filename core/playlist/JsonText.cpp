#include "core/playlist/JsonText.h"

#include <charconv>
#include <utility>

namespace json {
namespace {

constexpr std::string_view replacement = "\\ufffd";
constexpr std::size_t unicodeLength = replacement.size();
constexpr std::size_t maxNumber = 4096;

bool isPartOfNumber(char c) {
    return (c >= '0' && c <= '9') || c == '-' || c == '+' || c == '.' || c == 'e' || c == 'E';
}

bool startsNumber(char c) {
    return (c >= '0' && c <= '9') || c == '-';
}

} // namespace

bool Text::refill() {
    m_text.clear();
    m_next = 0;
    while (m_text.empty() && !m_ended) {
        std::string_view block = m_file.next();
        m_ended = block.empty();
        if (!std::exchange(m_started, true) && block.starts_with(byteOrderMark))
            block.remove_prefix(byteOrderMark.size());
        for (const char c : block) {
            if (m_stringLength > maxString || m_held.size() > maxNumber) m_ended = true;
            if (m_ended) break;
            accept(c);
        }
        if (m_ended) m_text += m_held; // truncated: the parser reports the error
    }
    return !m_text.empty();
}

void Text::accept(char c) {
    switch (m_state) {
    case State::inNumber:
        if (isPartOfNumber(c)) {
            m_held += c;
            return;
        }
        endNumber();
        [[fallthrough]];
    case State::between:
        if (startsNumber(c)) {
            m_held = c;
            m_state = State::inNumber;
            return;
        }
        if (c == '"') m_state = State::inString;
        m_stringLength = 0;
        m_text += c;
        return;
    case State::inString:
        return acceptInString(c);
    case State::afterBackslash:
        m_held += c;
        if (c == 'u') {
            m_state = State::inUnicode;
            return;
        }
        dropHalf();
        m_text += std::exchange(m_held, {});
        m_state = State::inString;
        return;
    case State::inUnicode:
        m_held += c;
        if (m_held.size() == unicodeLength) endUnicode();
        return;
    }
}

void Text::acceptInString(char c) {
    ++m_stringLength;
    if (c == '\\') {
        m_held = c;
        m_state = State::afterBackslash;
        return;
    }
    dropHalf();
    m_text += c;
    if (c == '"') m_state = State::between;
}

/// Ends a \u escape: keeps a surrogate pair, and replaces an unpaired surrogate.
void Text::endUnicode() {
    unsigned code = 0;
    std::from_chars(m_held.data() + 2, m_held.data() + m_held.size(), code, 16);
    const bool isHigh = code >= 0xD800 && code <= 0xDBFF;
    const bool isLow = code >= 0xDC00 && code <= 0xDFFF;
    m_state = State::inString;
    if (isLow && !m_half.empty()) {
        m_text += std::exchange(m_half, {}) + std::exchange(m_held, {});
        return;
    }
    dropHalf();
    if (isHigh)
        m_half = m_held;
    else
        m_text += isLow ? replacement : std::string_view(m_held);
    m_held.clear();
}

void Text::dropHalf() {
    if (m_half.empty()) return;
    m_half.clear();
    m_text += replacement;
}

void Text::endNumber() {
    double value = 0;
    const char* end = m_held.data() + m_held.size();
    const auto parsed = std::from_chars(m_held.data(), end, value);
    const bool isOutOfRange = parsed.ec == std::errc::result_out_of_range && parsed.ptr == end;
    m_text += isOutOfRange ? "0" : m_held;
    m_held.clear();
    m_state = State::between;
}

} // namespace json
