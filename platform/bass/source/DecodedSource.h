#pragma once

#include "platform/bass/source/ByteSource.h"
#include "platform/bass/source/Converter.h"
#include "platform/bass/source/Decoder.h"
#include "platform/bass/source/Source.h"

#include <memory>

namespace bass {

/// Bytes, decoded and converted in the caller's thread. A read waits as long as the bytes make it wait.
class DecodedSource final : public Source {
public:
    /// Null when `bytes` hold no sound of `format` that can be decoded.
    [[nodiscard]] static std::unique_ptr<DecodedSource> open(std::shared_ptr<ByteSource> bytes,
                                                             Format format);

    [[nodiscard]] ReadResult read(std::span<float> out) override;
    [[nodiscard]] bool seek(std::int64_t frame) override;
    [[nodiscard]] std::optional<std::int64_t> lengthFrames() const override;

private:
    DecodedSource(std::shared_ptr<ByteSource> bytes, std::unique_ptr<Decoder> decoder)
        : bytes_(std::move(bytes)), decoder_(std::move(decoder)) {
        converter_.setRounding(decoder_->rounding());
    }
    void discard();

    std::shared_ptr<ByteSource> bytes_; ///< outlives the decoder
    std::unique_ptr<Decoder> decoder_;
    Converter converter_;
    ReadResult::Status status_ = ReadResult::Status::more; ///< of the decoder
    std::int64_t toDiscard_ = 0;                           ///< frames to drop before the one sought
};

} // namespace bass
