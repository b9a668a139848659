#include "platform/bass/output/CubebOutput.h"

#include "platform/bass/FrameFormat.h"

#include <cstdlib>
#include <filesystem>
#include <string_view>
#include <unistd.h>

namespace bass {
namespace {

using namespace std::chrono_literals;

/// The sound server wakes seldom enough to cost little, and a change of volume still follows soon. Seeks and
/// pauses do not wait for it: they drop what is queued.
constexpr auto latency = 200ms;
constexpr std::uint32_t latencyFrames = sampleRate * latency.count() / 1000;

constexpr std::string_view soundServer = "pulse";

std::string environment(const char* name) {
    const char* value = std::getenv(name);
    return value ? value : "";
}

/// Of a PulseAudio server, or one that stands in for it.
bool isServerExpected() {
    if (!environment("PULSE_SERVER").empty()) return true;
    std::filesystem::path folder = environment("PULSE_RUNTIME_PATH");
    if (folder.empty()) folder = std::filesystem::path(environment("XDG_RUNTIME_DIR")) / "pulse";
    std::error_code unknown;
    return std::filesystem::exists(folder / "native", unknown) ||
           std::filesystem::exists("/run/pulse/native", unknown);
}

} // namespace

bool CubebOutput::accepts(cubeb& context) const {
    const std::string_view backend = m_library->backendId(&context);
    if (backend != soundServer && (isServerExpected() || (!m_backend.empty() && m_backend != backend)))
        return false;
    std::uint32_t channels = 0;
    return m_library->maxChannelCount(&context, &channels) == CUBEB_OK && channels > 0;
}

bool CubebOutput::connect() {
    const bool serverAppeared = m_backend != soundServer && isServerExpected();
    if (m_failed.exchange(false) || serverAppeared) {
        release();
        m_context.reset();
        m_thread = 0;
    }
    if (m_context) return true;
    m_library = CubebLibrary::load();
    if (!m_library) return false;
    cubeb* made = nullptr;
    if (m_library->init(&made, "Tulplayer", nullptr) != CUBEB_OK) return false;
    CubebContext context(made, CubebDeleter{m_library});
    if (!accepts(*made)) return false;
    m_backend = m_library->backendId(made);
    m_context = std::move(context);
    return true;
}

bool CubebOutput::prepare(Renderer& renderer) {
    if (!connect()) return false;
    if (m_next) return true;
    m_stream.reset();
    m_renderer = &renderer;
    cubeb_stream_params params{};
    params.format = CUBEB_SAMPLE_FLOAT32NE;
    params.rate = sampleRate;
    params.channels = channelCount;
    params.layout = CUBEB_LAYOUT_STEREO;
    params.prefs = CUBEB_STREAM_PREF_NONE;
    cubeb_stream* made = nullptr;
    if (m_library->streamInit(m_context.get(), &made, "Music", nullptr, nullptr, nullptr, &params,
                              latencyFrames, &fill, &stateChanged, this) != CUBEB_OK) {
        m_failed = true; // the server may be gone: connect anew next time
        return false;
    }
    m_next = CubebStream(made, CubebDeleter{m_library});
    m_library->onDeviceChanged(made, &deviceChanged);
    return true;
}

bool CubebOutput::start() {
    m_stream = std::move(m_next);
    if (m_backend == soundServer) m_sinks.watch();
    if (m_library->streamStart(m_stream.get()) == CUBEB_OK) return true;
    m_failed = true;
    return false;
}

void CubebOutput::stop() {
    if (m_stream) m_library->streamStop(m_stream.get());
}

void CubebOutput::release() {
    m_stream.reset();
    m_next.reset();
}

std::uint64_t CubebOutput::playedFrames() const {
    std::uint64_t frames = 0;
    if (!m_stream || m_library->streamPosition(m_stream.get(), &frames) != CUBEB_OK) return 0;
    return frames;
}

std::chrono::milliseconds CubebOutput::queueTime() const {
    return latency;
}

long CubebOutput::fill(cubeb_stream*, void* user, const void*, void* output, long frames) {
    auto* self = static_cast<CubebOutput*>(user);
    self->noteThread();
    self->m_renderer->render({static_cast<float*>(output), static_cast<std::size_t>(frames) * channelCount});
    return frames;
}

/// The one system call on this thread, and only the first time.
void CubebOutput::noteThread() {
    thread_local const pid_t thread = gettid();
    if (m_thread.load(std::memory_order_relaxed) == thread) return;
    m_thread = thread;
    m_signals.threadChanged();
}

void CubebOutput::stateChanged(cubeb_stream*, void* user, cubeb_state state) {
    if (state != CUBEB_STATE_ERROR) return;
    auto* self = static_cast<CubebOutput*>(user);
    self->m_failed = true;
    self->m_signals.lost();
}

void CubebOutput::deviceChanged(void* user) {
    static_cast<CubebOutput*>(user)->m_signals.lost();
}

} // namespace bass
