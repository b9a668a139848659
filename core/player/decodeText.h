#pragma once

#include <string>
#include <string_view>

/// Converts text of unknown encoding to one line of UTF-8: control characters become blanks, blanks at both
/// ends are removed, and a long text is truncated. Bytes that are not UTF-8 are read as Windows-1251 where
/// three letters above 0xBF follow one another, else as Windows-1252.
[[nodiscard]] std::string decodeText(std::string_view bytes);
