#pragma once

#include <QImage>

#include <functional>

class TulPlaylistEntry;
class Workers;

namespace app {

/// Decodes the entry's embedded picture on a worker. `take` gets it on the main thread: upright, scaled down
/// where it is larger than any screen shows it; null when its bytes are no picture, and at once when there is
/// none.
void decodeCover(Workers& workers, const TulPlaylistEntry& entry, std::function<void(const QImage&)> take);

} // namespace app
