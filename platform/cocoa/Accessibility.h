#pragma once

namespace cocoa {

/// Installs the accessibility interfaces of sliders and tables. Only the first call has an effect.
void installAccessibility();

} // namespace cocoa
