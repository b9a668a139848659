#pragma once

class QWidget;

namespace app {

/// Sets the skin's colours for platform-drawn widgets (dialogs, lists, tool tips). Call it before any window
/// is made.
void useSkinColours();

/// The skin's look for a widget that the platform draws: a menu, a selector, scroll bars. Once a
/// widget; it follows the scale.
void dressInSkin(QWidget& widget);

} // namespace app
