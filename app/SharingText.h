#pragma once

#include <QString>

class TulPlayer;

namespace app {

/// What the window says of network sharing.

/// The address at which others listen and how many do, or why nothing is shared.
QString sharingTitle(const TulPlayer& player);
/// One line for when sharing has been switched on.
QString sharingNotice(const TulPlayer& player);

} // namespace app
