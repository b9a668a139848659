#pragma once

namespace bass {

/// The state of a stream.
enum class StreamState {
    stopped,  ///< not started, or stopped by a seek from its end
    starting, ///< to be played as soon as enough frames are decoded (connecting, seeking, filling)
    playing,  ///< attached to the mixer
    paused,
    ended,  ///< its last frame has been played
    failed, ///< could not be opened
    freed,
};

/// The input of the state machine.
enum class StreamEvent {
    play,
    pause,
    seek,      ///< a seek begins
    filled,    ///< enough frames are decoded to start
    joined,    ///< its first frame follows another stream's last one, and is being played
    end,       ///< its last frame has been played
    exhausted, ///< nothing is left to play, and its end was reported before
    failure,   ///< its source could not be opened
    release,
};

/// The next state, and the actions to carry out.
struct StreamTransition {
    StreamState state;
    bool accepted = true;   ///< False: the event is ignored in this state.
    bool attach = false;    ///< Attach it to the mixer.
    bool detach = false;    ///< Detach it from the mixer, and discard what was mixed ahead.
    bool fromStart = false; ///< Seek to the first frame.

    bool operator==(const StreamTransition&) const = default;
};

/// The state machine of a stream, as a pure function.
[[nodiscard]] StreamTransition transition(StreamState state, StreamEvent event);

} // namespace bass
