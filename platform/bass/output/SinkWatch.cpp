#include "platform/bass/output/SinkWatch.h"

#include "platform/bass/LoadedLibrary.h"

#include <optional>
#include <string>
#include <string_view>
#include <unistd.h>

namespace bass {

/// The calls of libpulse that are made here. cubeb has loaded it where there is a server of that kind.
struct PulseLibrary {
    decltype(&pa_threaded_mainloop_new) newLoop;
    decltype(&pa_threaded_mainloop_free) freeLoop;
    decltype(&pa_threaded_mainloop_set_name) nameLoop;
    decltype(&pa_threaded_mainloop_start) startLoop;
    decltype(&pa_threaded_mainloop_stop) stopLoop;
    decltype(&pa_threaded_mainloop_lock) lock;
    decltype(&pa_threaded_mainloop_unlock) unlock;
    decltype(&pa_threaded_mainloop_get_api) api;
    decltype(&pa_context_new) newContext;
    decltype(&pa_context_unref) unrefContext;
    decltype(&pa_context_connect) connect;
    decltype(&pa_context_disconnect) disconnect;
    decltype(&pa_context_get_state) state;
    decltype(&pa_context_set_state_callback) onState;
    decltype(&pa_context_set_subscribe_callback) onChange;
    decltype(&pa_context_subscribe) subscribe;
    decltype(&pa_context_get_sink_input_info) streamInfo;
    decltype(&pa_context_get_sink_input_info_list) streamInfos;
    decltype(&pa_operation_unref) unrefOperation;
    decltype(&pa_proplist_gets) property;
};

namespace {

std::optional<PulseLibrary> loadPulse() {
    LoadedLibrary library(TUL_PULSE_LIBRARY);
    PulseLibrary calls{};
    library.find("pa_threaded_mainloop_new", calls.newLoop);
    library.find("pa_threaded_mainloop_free", calls.freeLoop);
    library.find("pa_threaded_mainloop_set_name", calls.nameLoop);
    library.find("pa_threaded_mainloop_start", calls.startLoop);
    library.find("pa_threaded_mainloop_stop", calls.stopLoop);
    library.find("pa_threaded_mainloop_lock", calls.lock);
    library.find("pa_threaded_mainloop_unlock", calls.unlock);
    library.find("pa_threaded_mainloop_get_api", calls.api);
    library.find("pa_context_new", calls.newContext);
    library.find("pa_context_unref", calls.unrefContext);
    library.find("pa_context_connect", calls.connect);
    library.find("pa_context_disconnect", calls.disconnect);
    library.find("pa_context_get_state", calls.state);
    library.find("pa_context_set_state_callback", calls.onState);
    library.find("pa_context_set_subscribe_callback", calls.onChange);
    library.find("pa_context_subscribe", calls.subscribe);
    library.find("pa_context_get_sink_input_info", calls.streamInfo);
    library.find("pa_context_get_sink_input_info_list", calls.streamInfos);
    library.find("pa_operation_unref", calls.unrefOperation);
    library.find("pa_proplist_gets", calls.property);
    return library.isComplete() ? std::optional(calls) : std::nullopt;
}

class LoopLock {
public:
    LoopLock(const PulseLibrary& library, pa_threaded_mainloop* loop) : m_library(library), m_loop(loop) {
        m_library.lock(m_loop);
    }
    ~LoopLock() { m_library.unlock(m_loop); }
    LoopLock(const LoopLock&) = delete;
    LoopLock& operator=(const LoopLock&) = delete;

private:
    const PulseLibrary& m_library;
    pa_threaded_mainloop* m_loop;
};

} // namespace

void PulseDeleter::operator()(pa_threaded_mainloop* loop) const {
    library->freeLoop(loop);
}

void PulseDeleter::operator()(pa_context* context) const {
    library->onState(context, nullptr, nullptr);
    library->disconnect(context);
    library->unrefContext(context);
}

SinkWatch::~SinkWatch() {
    if (!m_loop) return;
    m_library->stopLoop(m_loop.get());
    m_context.reset();
}

void SinkWatch::watch() {
    if (!startLoop()) return;
    const LoopLock lock(*m_library, m_loop.get());
    if (m_context && PA_CONTEXT_IS_GOOD(m_library->state(m_context.get()))) return;
    connect();
}

bool SinkWatch::startLoop() {
    if (m_loop) return true;
    static const std::optional<PulseLibrary> library = loadPulse();
    if (!library) return false;
    m_library = &*library;
    std::unique_ptr<pa_threaded_mainloop, PulseDeleter> loop(m_library->newLoop(), PulseDeleter{m_library});
    if (!loop) return false;
    m_library->nameLoop(loop.get(), "tul-sinks");
    if (m_library->startLoop(loop.get()) < 0) return false;
    m_loop = std::move(loop);
    return true;
}

void SinkWatch::connect() {
    m_context.reset();
    m_tracker = {};
    std::unique_ptr<pa_context, PulseDeleter> context(
        m_library->newContext(m_library->api(m_loop.get()), "Tulplayer"), PulseDeleter{m_library});
    if (!context) return;
    m_library->onState(context.get(), &stateChanged, this);
    if (m_library->connect(context.get(), nullptr, PA_CONTEXT_NOAUTOSPAWN, nullptr) < 0) return;
    m_context = std::move(context);
}

void SinkWatch::stateChanged(pa_context* context, void* user) {
    auto* self = static_cast<SinkWatch*>(user);
    const PulseLibrary& library = *self->m_library;
    if (library.state(context) != PA_CONTEXT_READY) return;
    const auto run = [&](pa_operation* operation) {
        if (operation) library.unrefOperation(operation);
    };
    library.onChange(context, &changed, self);
    const auto events =
        static_cast<pa_subscription_mask_t>(PA_SUBSCRIPTION_MASK_SINK | PA_SUBSCRIPTION_MASK_SINK_INPUT);
    run(library.subscribe(context, events, nullptr, nullptr));
    run(library.streamInfos(context, &streamFound, self));
}

void SinkWatch::changed(pa_context* context, pa_subscription_event_type_t event, std::uint32_t index,
                        void* user) {
    auto* self = static_cast<SinkWatch*>(user);
    const unsigned facility = event & PA_SUBSCRIPTION_EVENT_FACILITY_MASK;
    const bool removed = (event & PA_SUBSCRIPTION_EVENT_TYPE_MASK) == PA_SUBSCRIPTION_EVENT_REMOVE;
    const auto now = SinkTracker::Clock::now();
    if (facility == PA_SUBSCRIPTION_EVENT_SINK) {
        if (removed && self->m_tracker.sinkRemoved(index, now)) self->m_onRemoved();
    } else if (removed) {
        self->m_tracker.streamRemoved(index, now);
    } else if (pa_operation* operation = self->m_library->streamInfo(context, index, &streamFound, self)) {
        self->m_library->unrefOperation(operation);
    }
}

void SinkWatch::streamFound(pa_context* /*context*/, const pa_sink_input_info* stream, int end, void* user) {
    if (end != 0) return; // also when it is gone
    auto* self = static_cast<SinkWatch*>(user);
    const char* process = self->m_library->property(stream->proplist, PA_PROP_APPLICATION_PROCESS_ID);
    if (!process || std::to_string(getpid()) != process) return;
    self->m_tracker.streamIsOn(stream->index, stream->sink, SinkTracker::Clock::now());
}

} // namespace bass
