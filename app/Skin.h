#pragma once

class QWidget;

namespace app {

/// The skin's look for a widget that the platform draws: a menu, a selector, scroll bars. Dialogs stay the
/// desktop's.
void dressInSkin(QWidget& widget);

} // namespace app
