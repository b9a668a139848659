#pragma once

#include "platform/bass/source/ByteSource.h"
#include "platform/bass/source/Source.h"

#include <memory>
#include <optional>
#include <string>

namespace bass {

/// The packets of the one audio stream that is played from a container.
///
/// The content decides the container. Nothing but the given bytes is ever opened: containers that name other
/// files or addresses (playlists, manifests) are refused.
class Demuxer {
public:
    /// Null when `bytes` hold no audio stream of `format`. `bytes` must outlive the demuxer.
    [[nodiscard]] static std::unique_ptr<Demuxer> open(ByteSource& bytes, Format format);

    /// 0 with the next packet, AVERROR_EOF, or another AVERROR.
    [[nodiscard]] int next(AVPacket& packet);
    /// Goes to the last packet known to start at or before `timestamp` (in the stream's time base).
    [[nodiscard]] bool seek(std::int64_t timestamp);
    /// Whether the time of the first packet after a seek is only guessed when it lies at the byte `offset`.
    [[nodiscard]] bool guessesTimeAt(std::int64_t offset);

    [[nodiscard]] const ReplayGain& replayGain() const { return m_replayGain; }
    /// What the container says of the sound, in the form of StreamTags, at first and when it has changed
    /// since the last call.
    [[nodiscard]] std::optional<std::string> takeComments();

    [[nodiscard]] AVStream& stream() const { return *m_stream; }
    /// Whether the container is one that FFmpeg calls `name`.
    [[nodiscard]] bool is(const char* name) const;
    /// What is played, in frames at `sampleRate` without encoder delay and padding; none when unknown.
    [[nodiscard]] std::optional<std::int64_t> length(int sampleRate) const;
    /// Whether all packets have the same size, so that a byte offset tells a time exactly.
    [[nodiscard]] bool hasConstantBitRate() const { return m_constantBitRate; }
    /// Whether sound past `length` is padding that the decoder leaves to be cut.
    [[nodiscard]] bool hasPaddingPastLength() const { return m_paddingPastLength; }

private:
    explicit Demuxer(ByteSource& bytes) : m_bytes(bytes) {}
    [[nodiscard]] bool readFrom(std::int64_t offset);
    [[nodiscard]] const AVInputFormat* probe();
    [[nodiscard]] bool openContainer();
    [[nodiscard]] bool chooseStream();
    [[nodiscard]] bool isOf(Format format) const;
    void measure();
    void measureFlac();
    void measureMp3();
    void measureMp4();
    void readGain();

    ByteSource& m_bytes;
    AvioPtr m_avio; ///< outlives the format context
    FormatContextPtr m_context;
    AVStream* m_stream = nullptr;
    std::int64_t m_packetBytes = 0;           ///< a server may send for one packet
    std::optional<std::int64_t> m_duration;   ///< in the stream's time base, padding included
    std::optional<std::int64_t> m_flacFrames; ///< FLAC's own statement
    std::int64_t m_paddingFrames = 0;         ///< within `m_duration`, in frames of the stream's own rate
    std::optional<std::int64_t> m_lastPage;   ///< offset of Ogg's, once it was looked for
    bool m_paddingPastLength = false;
    bool m_constantBitRate = false;
    bool m_commentsTaken = false;
    ReplayGain m_replayGain;
};

} // namespace bass
