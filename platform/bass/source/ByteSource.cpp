#include "platform/bass/source/ByteSource.h"

#include <cstdio>

namespace bass {
namespace {

constexpr int bufferBytes = 32 * 1024;

int readPacket(void* opaque, std::uint8_t* buffer, int size) {
    auto& bytes = *static_cast<ByteSource*>(opaque);
    if (bytes.interrupted()) return AVERROR_EXIT;
    return bytes.read({buffer, static_cast<std::size_t>(size)});
}

std::int64_t seekTo(void* opaque, std::int64_t offset, int whence) {
    auto& bytes = *static_cast<ByteSource*>(opaque);
    if (whence & AVSEEK_SIZE) return bytes.size() < 0 ? AVERROR(ENOSYS) : bytes.size();
    if ((whence & ~AVSEEK_FORCE) != SEEK_SET || offset < 0) return AVERROR(EINVAL);
    return bytes.seek(offset);
}

} // namespace

AvioPtr makeAvio(ByteSource& bytes) {
    auto* buffer = static_cast<unsigned char*>(av_malloc(bufferBytes));
    if (!buffer) return nullptr;
    AvioPtr context(avio_alloc_context(buffer, bufferBytes, 0, &bytes, readPacket, nullptr,
                                       bytes.seekable() ? seekTo : nullptr));
    if (!context) av_free(buffer);
    return context;
}

} // namespace bass
