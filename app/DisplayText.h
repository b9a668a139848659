#pragma once

#include <QString>

#include <optional>
#include <string>

/// Converts the core's byte strings and seconds to display text.
namespace app {

/// The text of UTF-8 bytes; none when they are not UTF-8.
std::optional<QString> displayText(const std::string& bytes);

/// "mm:ss" of seconds, minutes not limited to two digits; an unknown (negative) time reads "00:00".
QString timeText(double seconds);

} // namespace app
