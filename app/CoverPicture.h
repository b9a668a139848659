#pragma once

#include <QImage>

class TulPlaylistEntry;

namespace app {

/// The entry's embedded picture, upright, scaled down where it is larger than any screen shows it; null when
/// there is none or its bytes are no picture.
QImage coverPicture(const TulPlaylistEntry& entry);

} // namespace app
