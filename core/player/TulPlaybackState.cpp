#include "core/player/TulPlaybackState.h"

#include "platform/bass/bass.h"

namespace {

/// The state of a channel that neither plays nor is paused: it has ended and the player has not been notified
/// yet, or it was rewound after its end.
TulPlaybackState endedState(TulPlaybackRequest request) {
    switch (request) {
    case TulPlaybackRequest::play:
        return TulPlaybackState::playing;
    case TulPlaybackRequest::pause:
        return TulPlaybackState::paused;
    case TulPlaybackRequest::stop:
        break;
    }
    return TulPlaybackState::stopped;
}

} // namespace

TulPlaybackState playbackState(const TulPlaybackFacts& facts) {
    if (!facts.hasStream) return TulPlaybackState::stopped;
    if (facts.failure) return TulPlaybackState::failed;
    if (facts.active == BASS_ACTIVE_STOPPED) return endedState(facts.request);
    if (facts.active == BASS_ACTIVE_PAUSED)
        return facts.request == TulPlaybackRequest::stop ? TulPlaybackState::stopped
                                                         : TulPlaybackState::paused;
    // Also between the end of the fade and the pause that its sync carries out.
    if (facts.request != TulPlaybackRequest::play) return TulPlaybackState::fadingOut;
    if (facts.connecting) return TulPlaybackState::connecting;
    return facts.active == BASS_ACTIVE_STALLED ? TulPlaybackState::waiting : TulPlaybackState::playing;
}

bool isStarted(TulPlaybackState state) {
    return state == TulPlaybackState::connecting || state == TulPlaybackState::playing ||
           state == TulPlaybackState::waiting;
}
