#pragma once

#include <string>
#include <string_view>

/// Text of an unknown encoding as one line of UTF-8: control characters become blanks, blanks at the ends go,
/// and a long text is cut. What is not UTF-8 is taken for Windows' Cyrillic (1251) where three such letters
/// follow one another, else for its Latin (1252).
[[nodiscard]] std::string decodeText(std::string_view bytes);
