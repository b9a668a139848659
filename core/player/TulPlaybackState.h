#pragma once

#include "core/playlist/TulFailure.h"

#include <cstdint>

/// What the player does, as window, notifications and session bus show it.
enum class TulPlaybackState {
    stopped,    ///< nothing was started, or what was started is back at its start
    connecting, ///< started, not played yet: the source is being opened
    playing,
    waiting,   ///< started, but out of data for now
    fadingOut, ///< on the way to paused or stopped: TulPlayer::request says which
    paused,
    failed, ///< the source cannot be played: TulPlayer::failure says why
};

/// What the player was asked to do last.
enum class TulPlaybackRequest { stop, play, pause };

/// The input of `playbackState`.
struct TulPlaybackFacts {
    bool hasStream = false;
    TulFailure failure;
    /// None of the stream's frames has been ready to be played yet.
    bool connecting = false;
    /// One of the BASS_ACTIVE_ values.
    std::uint32_t active = 0;
    TulPlaybackRequest request = TulPlaybackRequest::stop;
};

[[nodiscard]] TulPlaybackState playbackState(const TulPlaybackFacts& facts);

/// True for the states in which play/pause pauses: playing, or about to as soon as there is data.
[[nodiscard]] bool isStarted(TulPlaybackState state);
