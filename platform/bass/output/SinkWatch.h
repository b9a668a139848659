#pragma once

#include "platform/bass/output/SinkTracker.h"

#include <functional>
#include <memory>
#include <pulse/pulseaudio.h>

namespace bass {

struct PulseLibrary;
struct PulseDeleter {
    const PulseLibrary* library = nullptr;
    void operator()(pa_threaded_mainloop* loop) const;
    void operator()(pa_context* context) const;
};

/// Notices that the sound server removes the sink which this process plays to: headphones that are pulled
/// out, or a device that is switched off. cubeb does not say.
///
/// Threads: `watch` on the control thread; it waits for nothing. Events come on a thread of libpulse's,
/// "tul-sinks", which runs from the first `watch` on; it calls `onRemoved`, which only stores and wakes.
class SinkWatch {
public:
    explicit SinkWatch(std::function<void()> onRemoved) : m_onRemoved(std::move(onRemoved)) {}
    ~SinkWatch();
    SinkWatch(const SinkWatch&) = delete;
    SinkWatch& operator=(const SinkWatch&) = delete;

    /// Connects to the server, unless that has been done and holds. To be called when something is played.
    void watch();

private:
    bool startLoop();
    void connect();
    static void stateChanged(pa_context* context, void* user);
    static void changed(pa_context* context, pa_subscription_event_type_t event, std::uint32_t index,
                        void* user);
    static void streamFound(pa_context* context, const pa_sink_input_info* stream, int end, void* user);

    const PulseLibrary* m_library = nullptr; ///< Null until the first `watch`, and without libpulse.
    std::function<void()> m_onRemoved;
    std::unique_ptr<pa_threaded_mainloop, PulseDeleter> m_loop;
    std::unique_ptr<pa_context, PulseDeleter> m_context; ///< Guarded by the loop's lock, as the next.
    SinkTracker m_tracker;
};

} // namespace bass
