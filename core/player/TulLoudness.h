#pragma once

/// Which ReplayGain is applied to an entry: none, which leaves its samples unchanged; that of the track; or
/// that of its album, which keeps the loudness differences within an album.
enum class TulLoudness { off, track, album };
