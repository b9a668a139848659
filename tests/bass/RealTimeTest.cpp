// The priority of the audio thread, through a system bus of this process's own.

#include "platform/bass/bass.h"
#include "tests/bass/LibraryEnd.h"
#include "tests/support/Media.h"
#include "tests/support/SoundServer.h"
#include "tests/support/WaitFor.h"

#include <gtest/gtest.h>

#include <atomic>
#include <sched.h>
#include <sys/resource.h>
#include <systemd/sd-bus.h>
#include <thread>

namespace {

using support::waitFor;

/// Stands in for RealtimeKit, whose checks and whose answer it gives. Where this process may do so, it really
/// raises the thread.
class RealTimeKit {
public:
    explicit RealTimeKit(bool grants) : m_grants(grants) {
        const std::string address = "unix:path=" + (support::scratch() / "bus").string();
        setenv("DBUS_SYSTEM_BUS_ADDRESS", address.c_str(), 1);
        m_daemon = support::Child({"dbus-daemon", "--session", "--nofork", "--address=" + address});
        sd_bus* bus = nullptr;
        EXPECT_TRUE(waitFor([&] { return sd_bus_open_system(&bus) >= 0; }));
        sd_bus_add_object_vtable(bus, nullptr, "/org/freedesktop/RealtimeKit1", name, table, this);
        EXPECT_GE(sd_bus_request_name(bus, name, 0), 0);
        m_thread = std::jthread([bus](const std::stop_token& stop) {
            while (!stop.stop_requested() && sd_bus_process(bus, nullptr) >= 0)
                sd_bus_wait(bus, 10'000);
            sd_bus_flush_close_unref(bus);
        });
    }

    std::atomic<pid_t> asked{0};
    std::atomic<bool> raised{false};

private:
    static constexpr const char* name = "org.freedesktop.RealtimeKit1";

    static int make(sd_bus_message* message, void* user, sd_bus_error* error) {
        auto& self = *static_cast<RealTimeKit*>(user);
        std::uint64_t thread = 0;
        std::uint32_t priority = 0;
        sd_bus_message_read(message, "tu", &thread, &priority);
        rlimit limit{};
        getrlimit(RLIMIT_RTTIME, &limit);
        const bool bounded = limit.rlim_max <= 200'000 && priority >= 1 && priority <= 20;
        self.asked = static_cast<pid_t>(thread);
        if (!self.m_grants || !bounded)
            return sd_bus_error_set_const(error, SD_BUS_ERROR_ACCESS_DENIED, "not now");
        const sched_param param{static_cast<int>(priority)};
        self.raised = sched_setscheduler(self.asked, SCHED_RR | SCHED_RESET_ON_FORK, &param) == 0;
        return sd_bus_reply_method_return(message, "");
    }
    static int number(sd_bus*, const char*, const char*, const char* property, sd_bus_message* reply, void*,
                      sd_bus_error*) {
        if (std::string_view(property) == "RTTimeUSecMax")
            return sd_bus_message_append(reply, "x", std::int64_t{200'000});
        return sd_bus_message_append(reply, "i", 20);
    }
    static constexpr sd_bus_vtable table[] = {
        SD_BUS_VTABLE_START(0),
        SD_BUS_METHOD("MakeThreadRealtime", "tu", "", make, SD_BUS_VTABLE_UNPRIVILEGED),
        SD_BUS_PROPERTY("MaxRealtimePriority", "i", number, 0, SD_BUS_VTABLE_PROPERTY_CONST),
        SD_BUS_PROPERTY("RTTimeUSecMax", "x", number, 0, SD_BUS_VTABLE_PROPERTY_CONST), SD_BUS_VTABLE_END};

    const bool m_grants;
    support::Child m_daemon;
    std::jthread m_thread;
};

std::atomic<int> ends{0};
void countEnd(HSYNC, DWORD, DWORD, void*) {
    ++ends;
}

HSTREAM play(std::size_t frames) {
    unsetenv("TUL_AUDIO");
    const auto file = support::writeWav(support::scratch() / "noise.wav", support::noise(frames));
    EXPECT_TRUE(BASS_Init(-1, 44100, 0, nullptr, nullptr));
    const HSTREAM stream = BASS_StreamCreateFile(0, file.c_str(), 0, 0, 0);
    BASS_ChannelSetSync(stream, BASS_SYNC_END, 0, &countEnd, nullptr);
    BASS_ChannelPlay(stream, 0);
    return stream;
}

TEST(RealTimeTest, TheAudioThreadGetsItWhereGranted) {
    support::SoundServer server;
    RealTimeKit kit(true);
    const HSTREAM stream = play(3 * 44100);
    ASSERT_TRUE(waitFor([&] { return kit.asked != 0; }));
    if (!waitFor([&] { return kit.raised.load(); }, std::chrono::seconds(1)))
        GTEST_SKIP() << "this process may not raise a thread";
    EXPECT_EQ(sched_getscheduler(kit.asked), SCHED_RR | SCHED_RESET_ON_FORK);
    EXPECT_NE(kit.asked, getpid());
    // A thread that does not rest loses it, and the process goes on.
    raise(SIGXCPU);
    EXPECT_EQ(sched_getscheduler(kit.asked), SCHED_OTHER);
    EXPECT_TRUE(waitFor([] { return ends == 1; })) << BASS_ChannelIsActive(stream);
}

TEST(RealTimeTest, WithoutItPlaysAllTheSame) {
    support::SoundServer server;
    RealTimeKit kit(false);
    play(44100);
    EXPECT_TRUE(waitFor([&] { return kit.asked != 0; }));
    EXPECT_TRUE(waitFor([] { return ends == 1; }));
    EXPECT_EQ(sched_getscheduler(kit.asked), SCHED_OTHER);
}

} // namespace
