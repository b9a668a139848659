#pragma once

#include "platform/bass/replaygain.h"
#include "platform/bass/source/FfmpegPtr.h"

#include <cstdint>

namespace bass {

// Reads ReplayGain from tags that are skipped before FFmpeg (ID3v2) or that FFmpeg does not read (APE at the
// end of MP3 and AAC files). Other fields are skipped.

/// Reads the ID3v2 tags at the current position; returns the offset of their end. Without `fast`, which means
/// that a seek is as cheap as a read, fields after a picture are not read.
std::int64_t readId3Gain(AVIOContext& io, bool fast, ReplayGain& gain);
/// Adds missing values to `gain` from the APE tag at the end.
void readApeGain(AVIOContext& io, std::int64_t fileBytes, ReplayGain& gain);
/// Takes the values from metadata that FFmpeg has read.
void readDictionaryGain(const AVDictionary* texts, ReplayGain& gain);

} // namespace bass
