#pragma once

namespace cocoa {

/// Makes sliders and tables known to screen readers; every call after the first does nothing.
void installAccessibility();

} // namespace cocoa
