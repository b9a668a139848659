#pragma once

/// Which ReplayGain of an entry is applied to it: none, so that its samples are played as they are; that of
/// the track; or that of its album, so that the tracks of an album keep their relation.
enum class TulLoudness { off, track, album };
