#include "platform/bass/source/HttpStream.h"

#include <algorithm>
#include <string_view>
#include <thread>

extern "C" {
#include <libavutil/opt.h>
}

namespace bass {
namespace {

using namespace std::chrono_literals;

constexpr auto connectLimit = 5s;
/// A server that stays silent for so long is taken for gone.
constexpr auto silenceLimit = 10s;
/// A finite file that cannot be resumed for so long has failed.
constexpr auto resumeLimit = 60s;
constexpr auto firstPause = 250ms;
constexpr auto longestPause = 8s;

std::string textOption(AVIOContext& connection, const char* name) {
    std::uint8_t* value = nullptr;
    if (av_opt_get(&connection, name, AV_OPT_SEARCH_CHILDREN, &value) < 0 || !value) return {};
    std::string text(reinterpret_cast<const char*>(value));
    av_free(value);
    return text;
}

bool isHttp(std::string_view url) {
    return url.starts_with("http://") || url.starts_with("https://");
}

} // namespace

int HttpStream::mustStop(void* self) {
    const auto& stream = *static_cast<const HttpStream*>(self);
    return stream.interrupted() || Clock::now() > stream.deadline_;
}

void HttpStream::waitAtMost(Clock::duration limit) {
    deadline_ = std::min(openedBy_, Clock::now() + limit);
}

bool HttpStream::connect(std::int64_t offset) {
    connection_.reset();
    waitAtMost(connectLimit);
    AVDictionary* options = nullptr;
    av_dict_set(&options, "protocol_whitelist", "http,https,tcp,tls,crypto,httpproxy", 0);
    av_dict_set(&options, "tls_verify", "1", 0); // off, unless it is asked for
    av_dict_set(&options, "user_agent", "Tulplayer", 0);
    av_dict_set_int(&options, "offset", offset, 0);
    const AVIOInterruptCB callback = {mustStop, this};
    AVIOContext* connection = nullptr;
    const int failed = avio_open2(&connection, url_.c_str(), AVIO_FLAG_READ, &callback, &options);
    const DictionaryPtr leftOver(options);
    if (failed < 0) return false;
    connection_.reset(connection);
    if (const std::string location = textOption(*connection, "location"); !isHttp(location)) {
        connection_.reset();
        return false;
    }
    offset_ = offset;
    size_ = avio_size(connection);
    seekable_ = size_ >= 0 && (connection->seekable & AVIO_SEEKABLE_NORMAL);
    live_ = size_ < 0 && !textOption(*connection, "icy_metadata_headers").empty();
    return true;
}

int HttpStream::read(std::span<std::uint8_t> out) {
    while (!interrupted()) {
        if (!connection_ && size_ >= 0 && offset_ >= size_) return AVERROR_EOF;
        if (!connection_ && !resume()) return AVERROR(EIO);
        waitAtMost(silenceLimit);
        const int count = avio_read_partial(connection_.get(), out.data(), static_cast<int>(out.size()));
        if (count > 0) {
            offset_ += count;
            lastByte_ = Clock::now();
            pause_ = {};
            return count;
        }
        connection_.reset();
        // Without a length the end of the connection is all there is to tell the end by.
        if (size_ < 0 || offset_ >= size_) return AVERROR_EOF;
    }
    return AVERROR_EXIT;
}

bool HttpStream::resume() {
    if (live_ || !seekable_) return false;
    if (pause_ == Clock::duration::zero()) lastByte_ = Clock::now(); // what was sought may be old
    const auto giveUp = lastByte_ + resumeLimit;
    const std::int64_t size = size_;
    while (!interrupted() && Clock::now() < std::min(giveUp, openedBy_)) {
        for (const auto end = Clock::now() + pause_; Clock::now() < end && !interrupted();)
            std::this_thread::sleep_for(20ms);
        pause_ = std::clamp<Clock::duration>(pause_ * 2, firstPause, longestPause);
        if (connect(offset_)) return size_ == size;
    }
    return false;
}

std::int64_t HttpStream::seek(std::int64_t offset) {
    if (offset == offset_) return offset;
    connection_.reset(); // connected again by the next read
    offset_ = offset;
    return offset;
}

} // namespace bass
