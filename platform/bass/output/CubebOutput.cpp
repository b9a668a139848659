#include "platform/bass/output/CubebOutput.h"

#include "platform/bass/FrameFormat.h"

#include <algorithm>

namespace bass {
namespace {

/// A fifth of a second: the sound server wakes seldom enough to cost little, and a change of volume still
/// follows soon. Seeks and pauses do not wait for it: they drop what is queued.
constexpr std::uint32_t latencyFrames = sampleRate / 5;

using Context = std::unique_ptr<cubeb, CubebDeleter>;

Context connect() {
    cubeb* context = nullptr;
    if (cubeb_init(&context, "Tulplayer", nullptr) != CUBEB_OK) return nullptr;
    return Context(context);
}

/// With no server there, cubeb would go past it to the hardware, which a server that comes back needs.
Context connectAgain(const std::string& backend) {
    Context context = connect();
    return context && cubeb_get_backend_id(context.get()) == backend ? std::move(context) : nullptr;
}

} // namespace

std::unique_ptr<CubebOutput> CubebOutput::open(std::function<void()> onFailure) {
    auto context = connect();
    if (!context) return nullptr;
    std::uint32_t channels = 0;
    if (cubeb_get_max_channel_count(context.get(), &channels) != CUBEB_OK || channels == 0) return nullptr;
    return std::unique_ptr<CubebOutput>(new CubebOutput(std::move(context), std::move(onFailure)));
}

bool CubebOutput::prepare(Renderer& renderer) {
    m_stream.reset();
    if (!m_context) m_context = connectAgain(m_backend);
    if (!m_context) return false;
    m_renderer = &renderer;
    cubeb_stream_params params{};
    params.format = CUBEB_SAMPLE_FLOAT32NE;
    params.rate = sampleRate;
    params.channels = channelCount;
    params.layout = CUBEB_LAYOUT_STEREO;
    params.prefs = CUBEB_STREAM_PREF_NONE;
    cubeb_stream* stream = nullptr;
    if (cubeb_stream_init(m_context.get(), &stream, "Music", nullptr, nullptr, nullptr, &params,
                          latencyFrames, &fill, &stateChanged, this) != CUBEB_OK) {
        m_context.reset(); // the server may be gone: connect anew next time
        return false;
    }
    m_stream.reset(stream);
    cubeb_stream_register_device_changed_callback(stream, &deviceChanged);
    return true;
}

bool CubebOutput::start() {
    if (cubeb_stream_start(m_stream.get()) == CUBEB_OK) return true;
    m_stream.reset();
    m_context.reset();
    return false;
}

void CubebOutput::stop() {
    if (!m_stream) return;
    cubeb_stream_stop(m_stream.get());
    m_stream.reset();
}

std::uint64_t CubebOutput::playedFrames() const {
    std::uint64_t frames = 0;
    if (!m_stream || cubeb_stream_get_position(m_stream.get(), &frames) != CUBEB_OK) return 0;
    return frames;
}

long CubebOutput::fill(cubeb_stream*, void* user, const void*, void* output, long frames) {
    auto* self = static_cast<CubebOutput*>(user);
    self->m_renderer->render({static_cast<float*>(output), static_cast<std::size_t>(frames) * channelCount});
    return frames;
}

void CubebOutput::stateChanged(cubeb_stream*, void* user, cubeb_state state) {
    if (state == CUBEB_STATE_ERROR) static_cast<CubebOutput*>(user)->m_onFailure();
}

void CubebOutput::deviceChanged(void* user) {
    static_cast<CubebOutput*>(user)->m_onFailure();
}

} // namespace bass
