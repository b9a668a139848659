#pragma once

#include <QImage>

#include <functional>

class TulPlaylistEntry;
class Workers;

namespace app {

/// Decodes the entry's embedded picture on a worker. `take` receives it on the main thread: upright, and
/// scaled down if it is very large; null when it cannot be decoded, and at once when there is none.
void decodeCover(Workers& workers, const TulPlaylistEntry& entry, std::function<void(const QImage&)> take);

} // namespace app
