#pragma once

#include "platform/bass/source/ByteSource.h"
#include "platform/bass/source/Converter.h"
#include "platform/bass/source/Decoder.h"
#include "platform/bass/source/Source.h"

#include <memory>

namespace bass {

/// Decodes and converts a ByteSource on the calling thread. A read blocks as long as the byte source does.
class DecodedSource final : public Source {
public:
    /// Fails when `bytes` contain no decodable sound of `format`.
    [[nodiscard]] static OpenedSource open(std::shared_ptr<ByteSource> bytes, Format format);

    [[nodiscard]] ReadResult read(std::span<float> out) override;
    [[nodiscard]] bool seek(std::int64_t frame) override;
    [[nodiscard]] std::optional<std::int64_t> lengthFrames() const override;
    [[nodiscard]] ReplayGain replayGain() const override { return m_decoder->replayGain(); }
    /// Only comments.
    [[nodiscard]] std::optional<StreamTags> takeTags() override;

private:
    DecodedSource(std::shared_ptr<ByteSource> bytes, std::unique_ptr<Decoder> decoder)
        : m_bytes(std::move(bytes)), m_decoder(std::move(decoder)) {
        m_converter.setRounding(m_decoder->rounding());
    }
    [[nodiscard]] bool goTo(std::int64_t frame);
    [[nodiscard]] ReadResult::Status decode();
    void discard();

    std::shared_ptr<ByteSource> m_bytes; ///< outlives the decoder
    std::unique_ptr<Decoder> m_decoder;
    Converter m_converter;
    ReadResult::Status m_status = ReadResult::Status::more; ///< last status of the decoder; never `cancelled`
    std::int64_t m_toDiscard = 0;                           ///< frames to drop before the target of a seek
    std::int64_t m_next = 0;                                ///< the frame that is read next
    bool m_misplaced = false; ///< a cancelled or failed call left the decoder at an unknown position
};

/// Why `bytes` could not be opened; Failure::none when it was cancelled.
[[nodiscard]] Failure failureOf(const ByteSource& bytes);

} // namespace bass
