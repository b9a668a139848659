#include "core/background/Workers.h"
#include "tests/support/WaitFor.h"

#include <atomic>
#include <gtest/gtest.h>
#include <memory>
#include <optional>
#include <string>
#include <thread>

namespace {

using namespace std::chrono_literals;
using support::waitFor;
using Lane = Workers::Lane;

/// Workers with a main loop: this thread, when it delivers.
class WorkersTest : public testing::Test {
protected:
    void start(const Workers::Settings& settings = {.threads = 1, .hangTimeout = 1h}) {
        workers.emplace(settings);
        workers->setWake([this] { ++wakes; });
    }
    /// Until the condition holds.
    template <typename Condition> bool deliverUntil(Condition condition) {
        return waitFor([&] {
            workers->deliver();
            return condition();
        });
    }
    /// Keeps the worker that takes it until the gate is opened. What it touches outlives the test, as the
    /// workers may.
    Workers::Job blocker() const {
        return [gate = gate](const auto&) { gate->pass(); };
    }
    void note(Lane lane, char letter) {
        workers->run(lane,
                     [this, letter](const auto& reply) { reply.post([this, letter] { notes += letter; }); });
    }

    struct Gate {
        std::atomic<int> blocked = 0;
        std::atomic<bool> isOpen = false;
        void pass() {
            ++blocked;
            isOpen.wait(false);
        }
        void open() {
            isOpen = true;
            isOpen.notify_all();
        }
    };
    const std::shared_ptr<Gate> gate = std::make_shared<Gate>();
    std::atomic<int> wakes = 0;
    std::string notes;
    std::optional<Workers> workers;
};

TEST_F(WorkersTest, UrgentJobsComeFirstOwnOnesAtOnceAndResultsOnTheMainThread) {
    start();
    workers->run(Lane::bulk, blocker());
    ASSERT_TRUE(waitFor([&] { return gate->blocked == 1; }));
    for (const char letter : {'a', 'b', 'c'})
        note(Lane::bulk, letter);
    note(Lane::urgent, 'x');
    note(Lane::urgent, 'y');
    note(Lane::own, 'o');
    ASSERT_TRUE(waitFor([&] { return wakes == 1; }));
    EXPECT_EQ(notes, "") << "only a delivery runs them";
    ASSERT_TRUE(deliverUntil([&] { return notes == "o"; }));
    gate->open();
    ASSERT_TRUE(deliverUntil([&] { return notes.size() == 6; }));
    EXPECT_EQ(notes, "oyxabc");
    const int before = wakes;
    workers->deliver();
    EXPECT_EQ(wakes, before) << "nothing to deliver, nothing to wake for";
}

TEST_F(WorkersTest, AHangingThreadIsReplacedAndAbandoned) {
    start({.threads = 1, .hangTimeout = 1ms, .endTimeout = 1ms});
    workers->run(Lane::bulk, blocker());
    workers->run(Lane::own, blocker());
    ASSERT_TRUE(waitFor([&] { return gate->blocked == 2; }));
    std::this_thread::sleep_for(2ms); // now the first one hangs
    note(Lane::urgent, 'x');
    ASSERT_TRUE(deliverUntil([&] { return notes == "x"; }));

    // What they hold and post outlives the workers, and goes nowhere.
    const auto held = std::make_shared<int>(0);
    workers->run(Lane::own, [this, gate = gate, held](const Workers::Reply& reply) {
        gate->pass();
        reply.post([this] { notes += '!'; });
    });
    ASSERT_TRUE(waitFor([&] { return gate->blocked == 3; }));
    workers.reset();
    EXPECT_GT(held.use_count(), 1);
    gate->open();
    EXPECT_TRUE(waitFor([&] { return held.use_count() == 1; }));
    EXPECT_EQ(notes, "x");
}

TEST_F(WorkersTest, SavesFinishInOrderAndOtherJobsAreDropped) {
    start();
    std::string saved; // the destructor's waiting orders it
    std::atomic<int> read = 0;
    workers->run(Lane::bulk, blocker());
    ASSERT_TRUE(waitFor([&] { return gate->blocked == 1; }));
    workers->run(Lane::bulk, [&](const auto&) { ++read; });
    for (const char letter : {'a', 'b', 'c'}) {
        workers->run(Lane::saving, [&saved, letter](const auto&) {
            std::this_thread::sleep_for(5ms); // a slow disk
            saved += letter;
        });
    }
    std::thread opener([&] { gate->open(); });
    workers.reset();
    opener.join();
    EXPECT_EQ(saved, "abc");
    EXPECT_LE(read, 1);
}

} // namespace
