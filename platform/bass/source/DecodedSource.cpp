#include "platform/bass/source/DecodedSource.h"

#include <algorithm>
#include <array>
#include <numeric>

namespace bass {

using Status = ReadResult::Status;

OpenedSource DecodedSource::open(std::shared_ptr<ByteSource> bytes, Format format) {
    std::unique_ptr<Decoder> decoder = Decoder::open(*bytes, format);
    if (!decoder) return {nullptr, failureOf(*bytes)};
    return {std::unique_ptr<Source>(new DecodedSource(std::move(bytes), std::move(decoder)))};
}

Failure failureOf(const ByteSource& bytes) {
    if (bytes.cancel()->requested()) return Failure::none;
    return bytes.failure() == Failure::none ? Failure::noAudio : bytes.failure();
}

ReadResult DecodedSource::read(std::span<float> out) {
    for (;;) {
        if (m_bytes->cancel()->requested()) return {0, Status::cancelled};
        if (m_misplaced && !goTo(m_next)) {
            if (m_bytes->cancel()->requested()) continue;
            m_misplaced = false;
            m_status = Status::failed;
        }
        discard();
        const std::size_t taken = m_converter.take(out);
        m_next += static_cast<std::int64_t>(taken);
        if (taken > 0) return {taken, Status::more};
        if (m_status != Status::more) return {0, m_status};
        if (const Status status = decode(); status != Status::cancelled) m_status = status;
    }
}

Status DecodedSource::decode() {
    Decoder::Sound sound;
    const Status status = m_decoder->next(sound);
    if (status == Status::cancelled) {
        m_misplaced = m_decoder->lostItsPlace();
        return status;
    }
    if (status != Status::more)
        m_converter.finish();
    else if (!m_converter.push(*sound.frame, sound.offset, sound.count))
        return Status::failed;
    return status;
}

void DecodedSource::discard() {
    std::array<float, 1024> dropped;
    while (m_toDiscard > 0) {
        const auto count = std::min<std::int64_t>(m_toDiscard * channelCount, dropped.size());
        const std::size_t taken = m_converter.take(std::span(dropped).first(static_cast<std::size_t>(count)));
        if (taken == 0) return;
        m_toDiscard -= static_cast<std::int64_t>(taken);
    }
}

bool DecodedSource::seek(std::int64_t frame) {
    if (!m_bytes->seekable()) return false;
    frame = std::max<std::int64_t>(frame, 0);
    if (const auto length = lengthFrames()) frame = std::min(frame, *length);
    if (!goTo(frame)) {
        m_misplaced = true;
        return false;
    }
    m_next = frame;
    return true;
}

bool DecodedSource::goTo(std::int64_t frame) {
    // Start the resampler a little earlier, where an input frame and an output frame coincide.
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
    m_misplaced = false;
    return true;
}

std::optional<StreamTags> DecodedSource::takeTags() {
    auto comments = m_decoder->takeComments();
    if (!comments) return std::nullopt;
    return StreamTags{.headers = {}, .metadata = {}, .comments = std::move(*comments)};
}

std::optional<std::int64_t> DecodedSource::lengthFrames() const {
    const auto length = m_decoder->length();
    if (!length) return std::nullopt;
    return av_rescale_rnd(*length, sampleRate, m_decoder->rate(), m_decoder->rounding());
}

} // namespace bass
