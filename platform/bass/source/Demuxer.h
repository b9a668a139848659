#pragma once

#include "platform/bass/source/ByteSource.h"
#include "platform/bass/source/Source.h"

#include <memory>
#include <optional>
#include <string>

namespace bass {

/// Reads the packets of a container's audio stream.
///
/// The format is detected by content. Only the given bytes are opened: containers that refer to other files
/// or addresses (playlists, manifests) are rejected.
class Demuxer {
public:
    /// Null when `bytes` contain no audio stream of `format`. `bytes` must outlive the demuxer.
    [[nodiscard]] static std::unique_ptr<Demuxer> open(ByteSource& bytes, Format format);

    /// 0 with the next packet, AVERROR_EOF, or another AVERROR.
    [[nodiscard]] int next(AVPacket& packet);
    /// Seeks to the last packet known to start at or before `timestamp` (in the stream's time base).
    [[nodiscard]] bool seek(std::int64_t timestamp);
    /// True when the time of a packet at byte `offset` is unreliable if it is the first after a seek.
    [[nodiscard]] bool guessesTimeAt(std::int64_t offset);

    [[nodiscard]] const ReplayGain& replayGain() const { return m_replayGain; }
    /// The container's comments, in the form of StreamTags, if they have changed since the last call.
    [[nodiscard]] std::optional<std::string> takeComments();

    [[nodiscard]] AVStream& stream() const { return *m_stream; }
    /// True when FFmpeg calls the container format `name`.
    [[nodiscard]] bool is(const char* name) const;
    /// The length in frames at `sampleRate`, without encoder delay and padding; none when unknown.
    [[nodiscard]] std::optional<std::int64_t> length(int sampleRate) const;
    /// True when all packets have the same size, so that a byte offset determines the time.
    [[nodiscard]] bool hasConstantBitRate() const { return m_constantBitRate; }
    /// True when sound past `length` is padding that the decoder does not trim.
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
    std::int64_t m_packetBytes = 0;           ///< limit of the bytes read for one packet from a server
    std::optional<std::int64_t> m_duration;   ///< in the stream's time base, padding included
    std::optional<std::int64_t> m_flacFrames; ///< length stated by the FLAC stream itself
    std::int64_t m_paddingFrames = 0;         ///< within `m_duration`, in frames of the stream's own rate
    std::optional<std::int64_t> m_lastPage;   ///< offset of the last Ogg page, once determined
    bool m_paddingPastLength = false;
    bool m_constantBitRate = false;
    bool m_commentsTaken = false;
    ReplayGain m_replayGain;
};

} // namespace bass
