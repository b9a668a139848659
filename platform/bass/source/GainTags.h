#pragma once

#include "platform/bass/replaygain.h"
#include "platform/bass/source/FfmpegPtr.h"

#include <cstdint>

namespace bass {

// The loudness in tags that FFmpeg is not given to read, or does not read: ID3v2 before the sound, APE behind
// that of an MP3 or AAC file. Only the fields in question are held; what lies between is skipped.

/// Goes past the ID3v2 tags that start here, as skipId3Tags does; answers where they end. `fast`: a seek
/// costs no more than a read; otherwise what lies behind a picture is not read.
std::int64_t readId3Gain(AVIOContext& io, bool fast, ReplayGain& gain);
/// Completes `gain` by the APE tag at the end.
void readApeGain(AVIOContext& io, std::int64_t fileBytes, ReplayGain& gain);
/// What FFmpeg has read.
void readDictionaryGain(const AVDictionary* texts, ReplayGain& gain);

} // namespace bass
