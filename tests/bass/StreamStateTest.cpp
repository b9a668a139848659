#include "platform/bass/StreamState.h"

#include <gtest/gtest.h>

#include <map>
#include <utility>

namespace {

using Event = bass::StreamEvent;
using State = bass::StreamState;
using bass::StreamTransition;

TEST(StreamStateTest, Transitions) {
    const std::map<std::pair<State, Event>, StreamTransition> table{
        {{State::stopped, Event::play}, {.state = State::starting}},
        {{State::stopped, Event::seek}, {.state = State::stopped}},
        {{State::stopped, Event::joined}, {.state = State::playing}},
        {{State::stopped, Event::failure}, {.state = State::failed}},
        {{State::stopped, Event::release}, {.state = State::freed}},

        {{State::starting, Event::play}, {.state = State::starting}},
        {{State::starting, Event::pause}, {.state = State::paused}},
        {{State::starting, Event::seek}, {.state = State::starting}},
        {{State::starting, Event::filled}, {.state = State::playing, .attach = true}},
        {{State::starting, Event::exhausted}, {.state = State::ended}},
        {{State::starting, Event::failure}, {.state = State::failed}},
        {{State::starting, Event::release}, {.state = State::freed}},

        {{State::playing, Event::play}, {.state = State::playing}},
        {{State::playing, Event::pause}, {.state = State::paused, .detach = true}},
        {{State::playing, Event::seek}, {.state = State::starting, .detach = true}},
        {{State::playing, Event::end}, {.state = State::ended, .detach = true}},
        {{State::playing, Event::release}, {.state = State::freed, .detach = true}},

        {{State::paused, Event::play}, {.state = State::starting}},
        {{State::paused, Event::seek}, {.state = State::paused}},
        {{State::paused, Event::failure}, {.state = State::failed}},
        {{State::paused, Event::release}, {.state = State::freed}},

        {{State::ended, Event::play}, {.state = State::starting, .fromStart = true}},
        {{State::ended, Event::seek}, {.state = State::stopped}},
        {{State::ended, Event::release}, {.state = State::freed}},

        {{State::failed, Event::release}, {.state = State::freed}},
    };
    for (int state = 0; state <= static_cast<int>(State::freed); ++state)
        for (int event = 0; event <= static_cast<int>(Event::release); ++event) {
            const std::pair key{static_cast<State>(state), static_cast<Event>(event)};
            const auto row = table.find(key);
            const StreamTransition expected =
                row == table.end() ? StreamTransition{.state = key.first, .accepted = false} : row->second;
            EXPECT_EQ(transition(key.first, key.second), expected) << state << " on " << event;
        }
}

} // namespace
