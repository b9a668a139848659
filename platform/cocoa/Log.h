#pragma once

class QString;

namespace cocoa {

/// Writes a line to the system log and to standard error.
void log(const QString& message);

} // namespace cocoa
