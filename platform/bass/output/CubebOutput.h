#pragma once

#include "platform/bass/output/Output.h"

#include <cubeb/cubeb.h>

#include <functional>
#include <memory>
#include <string>

namespace bass {

struct CubebDeleter {
    void operator()(cubeb* context) const { cubeb_destroy(context); }
    void operator()(cubeb_stream* stream) const { cubeb_stream_destroy(stream); }
};

/// The default sound device, through cubeb.
class CubebOutput : public Output {
public:
    /// Null without a device. `onFailure` is called when the device is lost or another has become the default
    /// one.
    static std::unique_ptr<CubebOutput> open(std::function<void()> onFailure);

    bool prepare(Renderer& renderer) override;
    bool start() override;
    void stop() override;
    std::uint64_t playedFrames() const override;

private:
    CubebOutput(std::unique_ptr<cubeb, CubebDeleter> context, std::function<void()> onFailure)
        : m_context(std::move(context)),
          m_backend(cubeb_get_backend_id(m_context.get())),
          m_onFailure(std::move(onFailure)) {}

    static long fill(cubeb_stream* stream, void* user, const void* input, void* output, long frames);
    static void stateChanged(cubeb_stream* stream, void* user, cubeb_state state);
    static void deviceChanged(void* user);

    std::unique_ptr<cubeb, CubebDeleter> m_context;
    std::string m_backend; ///< The first connection's; every later one is of the same.
    std::function<void()> m_onFailure;
    Renderer* m_renderer = nullptr;
    std::unique_ptr<cubeb_stream, CubebDeleter> m_stream;
};

} // namespace bass
