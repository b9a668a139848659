#pragma once

class QWidget;

namespace app {

/// Gives all that the platform draws the skin's colours: dialogs, lists, tool tips. Before any window is
/// made.
void useSkinColours();

/// The skin's look for a widget that the platform draws: a menu, a selector, scroll bars. Once a
/// widget; it follows the scale.
void dressInSkin(QWidget& widget);

} // namespace app
