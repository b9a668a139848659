#include "platform/bass/source/DecodedSource.h"

#include <algorithm>
#include <array>
#include <numeric>

namespace bass {

using Status = ReadResult::Status;

std::unique_ptr<DecodedSource> DecodedSource::open(std::shared_ptr<ByteSource> bytes, Format format) {
    std::unique_ptr<Decoder> decoder = Decoder::open(*bytes, format);
    if (!decoder) return nullptr;
    return std::unique_ptr<DecodedSource>(new DecodedSource(std::move(bytes), std::move(decoder)));
}

ReadResult DecodedSource::read(std::span<float> out) {
    if (m_bytes->interrupted()) return {0, Status::failed};
    const std::size_t wanted = out.size() / channelCount;
    std::size_t filled = 0;
    while (filled < wanted) {
        discard();
        const std::size_t taken = m_converter.take(out.subspan(filled * channelCount));
        filled += taken;
        if (taken > 0) continue;
        if (m_status != Status::more) return {filled, m_status};
        Decoder::Sound sound;
        m_status = m_decoder->next(sound);
        if (m_status != Status::more)
            m_converter.finish();
        else if (!m_converter.push(*sound.frame, sound.offset, sound.count))
            m_status = Status::failed;
    }
    return {filled, Status::more};
}

void DecodedSource::discard() {
    std::array<float, 1024> dropped;
    while (m_toDiscard > 0) {
        const auto most = std::min<std::int64_t>(m_toDiscard * channelCount, dropped.size());
        const std::size_t taken = m_converter.take(std::span(dropped).first(static_cast<std::size_t>(most)));
        if (taken == 0) return;
        m_toDiscard -= static_cast<std::int64_t>(taken);
    }
}

bool DecodedSource::seek(std::int64_t frame) {
    frame = std::max<std::int64_t>(frame, 0);
    if (const auto length = lengthFrames()) frame = std::min(frame, *length);
    // The resampler starts a little earlier, where an input frame and an output frame fall together.
    const std::int64_t rate = m_decoder->rate();
    const std::int64_t common = std::gcd<std::int64_t>(rate, sampleRate);
    const std::int64_t unitIn = rate / common;
    const std::int64_t unitOut = sampleRate / common;
    const std::int64_t settling = rate == sampleRate ? 0 : 2048 / unitOut + 1;
    const std::int64_t unit = std::max<std::int64_t>(frame / unitOut - settling, 0);
    if (!m_decoder->seek(unit * unitIn)) return false;
    m_converter.reset();
    m_toDiscard = frame - unit * unitOut;
    m_status = Status::more;
    return true;
}

std::optional<std::int64_t> DecodedSource::lengthFrames() const {
    const auto length = m_decoder->length();
    if (!length) return std::nullopt;
    return av_rescale_rnd(*length, sampleRate, m_decoder->rate(), m_decoder->rounding());
}

} // namespace bass
