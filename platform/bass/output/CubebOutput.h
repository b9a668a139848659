#pragma once

#include "platform/bass/output/CubebLibrary.h"
#include "platform/bass/output/Output.h"
#include "platform/bass/output/SinkWatch.h"

#include <atomic>
#include <functional>
#include <string>

namespace bass {

/// The default sound device, through cubeb.
///
/// Which backend: a sound server that is expected (PULSE_SERVER names one, or its socket is there) and does
/// not answer is waited for; the hardware behind it, which it needs, is not taken. Without such a server it
/// is the first backend that has a device, until a server appears. Once connected, the backend stays the
/// same.
class CubebOutput : public Output {
public:
    explicit CubebOutput(DeviceSignals signals)
        : m_signals(std::move(signals)), m_sinks(m_signals.sinkRemoved) {}

    bool prepare(Renderer& renderer) override;
    bool start() override;
    void stop() override;
    void release() override;
    std::uint64_t playedFrames() const override;
    std::chrono::milliseconds queueTime() const override;
    pid_t audioThread() const override { return m_thread; }

private:
    bool connect();
    void noteThread();
    bool accepts(cubeb& context) const;

    static long fill(cubeb_stream* stream, void* user, const void* input, void* output, long frames);
    static void stateChanged(cubeb_stream* stream, void* user, cubeb_state state);
    static void deviceChanged(void* user);

    const CubebLibrary* m_library = nullptr; ///< Loaded by the first `prepare`.
    const DeviceSignals m_signals;
    SinkWatch m_sinks;
    std::string m_backend;             ///< Of the last connection.
    std::atomic<pid_t> m_thread{0};    ///< The one that asks for frames.
    std::atomic<bool> m_failed{false}; ///< A stream reported an error: its connection may be gone.
    Renderer* m_renderer = nullptr;
    CubebContext m_context;
    CubebStream m_next;   ///< Prepared, not started.
    CubebStream m_stream; ///< Started; after `stop` kept for its position.
};

} // namespace bass
