#pragma once

#include "platform/bass/FrameFormat.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>

namespace bass {

/// What a read brought. `frames` may be above 0 with any status; they come first.
struct ReadResult {
    enum class Status {
        more,    ///< go on reading
        starved, ///< nothing now (network); try again after a moment
        end,     ///< the last frame has been read
        failed,  ///< the rest cannot be had
    };
    std::size_t frames = 0;
    Status status = Status::more;
};

/// One opened file or address.
///
/// Threads: created on any thread; then read, seek and the destructor are the decoding thread's (one at a
/// time). `lengthFrames` is fixed at opening. `interrupt` may come from any thread at any time.
class Source {
public:
    virtual ~Source() = default;

    /// Fills `out` (channelCount floats a frame) with the next frames. Blocks on the network 100 ms at most.
    [[nodiscard]] virtual ReadResult read(std::span<float> out) = 0;
    /// Makes `frame` (from the source's first frame, clipped to its end) the next one read. False where it
    /// cannot.
    [[nodiscard]] virtual bool seek(std::int64_t frame) = 0;
    /// Length in frames; none when it is not known (live streams).
    [[nodiscard]] virtual std::optional<std::int64_t> lengthFrames() const = 0;
    /// Ends a blocking read soon, and every later one.
    virtual void interrupt() noexcept = 0;
};

/// Which content a file may hold to be accepted.
enum class Format { any, flac, ape, opus, wavpack };

/// Opens a local file; null when it holds no sound of `format` that can be decoded. Never blocks on a FIFO.
[[nodiscard]] std::unique_ptr<Source> openFile(const std::string& path, Format format);
/// Connects to an http or https address, 5 s at most; null when that fails.
[[nodiscard]] std::unique_ptr<Source> openUrl(const std::string& url);

} // namespace bass
