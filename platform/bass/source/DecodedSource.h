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
    void interrupt() noexcept override { m_bytes->interrupt(); }

private:
    DecodedSource(std::shared_ptr<ByteSource> bytes, std::unique_ptr<Decoder> decoder)
        : m_bytes(std::move(bytes)), m_decoder(std::move(decoder)) {
        m_converter.setRounding(m_decoder->rounding());
    }
    void discard();

    std::shared_ptr<ByteSource> m_bytes; ///< outlives the decoder
    std::unique_ptr<Decoder> m_decoder;
    Converter m_converter;
    ReadResult::Status m_status = ReadResult::Status::more; ///< of the decoder
    std::int64_t m_toDiscard = 0;                           ///< frames to drop before the one sought
};

} // namespace bass
