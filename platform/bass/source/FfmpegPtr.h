#pragma once

#include <memory>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libswresample/swresample.h>
}

/// Owning pointers to FFmpeg's objects.
namespace bass {

struct FfmpegDeleter {
    void operator()(AVFormatContext* context) const { avformat_close_input(&context); }
    void operator()(AVCodecContext* context) const { avcodec_free_context(&context); }
    void operator()(AVPacket* packet) const { av_packet_free(&packet); }
    void operator()(AVFrame* frame) const { av_frame_free(&frame); }
    void operator()(SwrContext* context) const { swr_free(&context); }
    void operator()(AVDictionary* dictionary) const { av_dict_free(&dictionary); }
};

/// For a context with our own callbacks. FFmpeg may have replaced its buffer.
struct AvioDeleter {
    void operator()(AVIOContext* context) const {
        av_freep(&context->buffer);
        avio_context_free(&context);
    }
};

/// For a context that FFmpeg opened.
struct AvioCloser {
    void operator()(AVIOContext* context) const { avio_close(context); }
};

using FormatContextPtr = std::unique_ptr<AVFormatContext, FfmpegDeleter>;
using CodecContextPtr = std::unique_ptr<AVCodecContext, FfmpegDeleter>;
using PacketPtr = std::unique_ptr<AVPacket, FfmpegDeleter>;
using FramePtr = std::unique_ptr<AVFrame, FfmpegDeleter>;
using SwrContextPtr = std::unique_ptr<SwrContext, FfmpegDeleter>;
using DictionaryPtr = std::unique_ptr<AVDictionary, FfmpegDeleter>;
using AvioPtr = std::unique_ptr<AVIOContext, AvioDeleter>;
using OpenedAvioPtr = std::unique_ptr<AVIOContext, AvioCloser>;

} // namespace bass
