#include "platform/bass/StreamState.h"

namespace bass {
namespace {

using State = StreamState;

StreamTransition ignored(State state) {
    return {.state = state, .accepted = false};
}

StreamTransition play(State state) {
    switch (state) {
    case State::stopped:
    case State::paused:
        return {.state = State::starting};
    case State::ended:
        return {.state = State::starting, .fromStart = true};
    case State::starting:
    case State::playing:
        return {.state = state};
    default:
        return ignored(state);
    }
}

StreamTransition pause(State state) {
    if (state == State::starting) return {.state = State::paused};
    if (state == State::playing) return {.state = State::paused, .detach = true};
    return ignored(state);
}

StreamTransition seek(State state) {
    switch (state) {
    case State::playing:
        return {.state = State::starting, .detach = true};
    case State::ended:
        return {.state = State::stopped};
    case State::stopped:
    case State::starting:
    case State::paused:
        return {.state = state};
    default:
        return ignored(state);
    }
}

} // namespace

StreamTransition transition(StreamState state, StreamEvent event) {
    if (state == State::freed) return ignored(state);
    if (event == StreamEvent::release) return {.state = State::freed, .detach = state == State::playing};
    if (state == State::failed) return ignored(state);
    switch (event) {
    case StreamEvent::play:
        return play(state);
    case StreamEvent::pause:
        return pause(state);
    case StreamEvent::seek:
        return seek(state);
    case StreamEvent::filled:
        if (state == State::starting) return {.state = State::playing, .attach = true};
        break;
    case StreamEvent::joined:
        if (state == State::stopped) return {.state = State::playing};
        break;
    case StreamEvent::end:
        if (state == State::playing) return {.state = State::ended, .detach = true};
        break;
    case StreamEvent::exhausted:
        if (state == State::starting) return {.state = State::ended};
        break;
    case StreamEvent::failure:
        if (state != State::playing && state != State::ended) return {.state = State::failed};
        break;
    case StreamEvent::release:
        break;
    }
    return ignored(state);
}

} // namespace bass
