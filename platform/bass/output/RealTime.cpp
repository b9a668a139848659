#include "platform/bass/output/RealTime.h"

#include "platform/bass/LoadedLibrary.h"

#include <algorithm>
#include <atomic>
#include <csignal>
#include <cstdint>
#include <memory>
#include <optional>
#include <pthread.h>
#include <sched.h>
#include <sys/resource.h>
#include <system_error>
#include <systemd/sd-bus.h>
#include <thread>

namespace bass {
namespace {

constexpr const char* service = "org.freedesktop.RealtimeKit1";
constexpr const char* object = "/org/freedesktop/RealtimeKit1";
/// That of sound servers: above all that is not sound, and no more.
constexpr int wantedPriority = 5;
constexpr std::int64_t maxMicroseconds = 200'000;
constexpr std::uint64_t answerMicroseconds = 5'000'000;

/// The calls of libsystemd that are made here.
struct BusLibrary {
    decltype(&sd_bus_open_system) openSystem;
    decltype(&sd_bus_set_method_call_timeout) setTimeout;
    decltype(&sd_bus_get_property_trivial) getProperty;
    decltype(&sd_bus_call_method) call;
    decltype(&sd_bus_flush_close_unref) close;
};

struct BusCloser {
    decltype(&sd_bus_flush_close_unref) close = nullptr;
    void operator()(sd_bus* bus) const { close(bus); }
};
using Bus = std::unique_ptr<sd_bus, BusCloser>;

std::optional<BusLibrary> loadBus() {
    LoadedLibrary library(TUL_SYSTEMD_LIBRARY);
    BusLibrary calls{};
    library.find("sd_bus_open_system", calls.openSystem);
    library.find("sd_bus_set_method_call_timeout", calls.setTimeout);
    library.find("sd_bus_get_property_trivial", calls.getProperty);
    library.find("sd_bus_call_method", calls.call);
    library.find("sd_bus_flush_close_unref", calls.close);
    return library.isComplete() ? std::optional(calls) : std::nullopt;
}

std::atomic<pid_t> realTimeThread{0};

/// A signal handler.
void leaveRealTime(int /*signal*/) {
    const sched_param usual{};
    if (const pid_t thread = realTimeThread) sched_setscheduler(thread, SCHED_OTHER, &usual);
}

/// RealtimeKit gives nothing to a process that could stop the machine. The signal comes at half of the time.
bool limitTime(std::int64_t microseconds) {
    struct sigaction action {};
    action.sa_handler = leaveRealTime;
    action.sa_flags = SA_RESTART;
    if (sigaction(SIGXCPU, &action, nullptr) != 0) return false;
    rlimit limit{};
    if (getrlimit(RLIMIT_RTTIME, &limit) != 0) return false;
    limit.rlim_max = std::min(limit.rlim_max, static_cast<rlim_t>(microseconds));
    limit.rlim_cur = std::min(limit.rlim_cur, limit.rlim_max / 2);
    return setrlimit(RLIMIT_RTTIME, &limit) == 0;
}

void ask(pid_t thread) {
    static const std::optional<BusLibrary> library = loadBus();
    sd_bus* opened = nullptr;
    if (!library || library->openSystem(&opened) < 0) return;
    const Bus bus(opened, BusCloser{library->close});
    library->setTimeout(opened, answerMicroseconds);
    std::int32_t maxPriority = 0;
    std::int64_t maxTime = 0;
    const auto get = [&](const char* name, char type, void* value) {
        return library->getProperty(opened, service, object, service, name, nullptr, type, value) >= 0;
    };
    if (!get("MaxRealtimePriority", 'i', &maxPriority) || !get("RTTimeUSecMax", 'x', &maxTime)) return;
    if (maxPriority < 1 || maxTime < 2 || !limitTime(std::min(maxTime, maxMicroseconds))) return;
    realTimeThread = thread;
    library->call(opened, service, object, service, "MakeThreadRealtime", nullptr, nullptr, "tu",
                  static_cast<std::uint64_t>(thread),
                  static_cast<std::uint32_t>(std::min(maxPriority, wantedPriority)));
}

} // namespace

void requestRealTime(pid_t thread) {
    try {
        std::thread([thread] {
            pthread_setname_np(pthread_self(), "tul-priority");
            ask(thread);
        }).detach();
    } catch (const std::system_error&) {
        // Without threads there are worse troubles.
    }
}

} // namespace bass
