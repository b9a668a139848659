#pragma once

namespace bass {

/// What a stream does.
enum class StreamState {
    stopped,  ///< not started, or stopped by a seek from its end
    starting, ///< is to play; its frames are not there yet (connecting, seeking, filling)
    playing,  ///< the mixer has it
    paused,
    ended,  ///< its last frame has been played
    failed, ///< could not be opened
    freed,
};

/// What happens to a stream.
enum class StreamEvent {
    play,
    pause,
    seek,      ///< a seek begins
    filled,    ///< enough frames are there to start
    joined,    ///< its first frame follows another stream's last one, and is being played
    end,       ///< its last frame has been played
    exhausted, ///< there is nothing more to play, and its end was reported before
    failure,   ///< its source could not be opened
    release,
};

/// The state that follows, and what is to be done about it.
struct StreamTransition {
    StreamState state;
    bool accepted = true;   ///< False: the event means nothing in this state, which stays.
    bool attach = false;    ///< Give it to the mixer.
    bool detach = false;    ///< Take it from the mixer; what was mixed ahead is discarded.
    bool fromStart = false; ///< Go to the first frame.

    bool operator==(const StreamTransition&) const = default;
};

/// A pure function: the whole of a stream's state machine.
[[nodiscard]] StreamTransition transition(StreamState state, StreamEvent event);

} // namespace bass
