#pragma once

#include <cstdint>

/// The audio library: opened sources ("streams") that play through one output device.
///
/// Units: sample data is interleaved 32-bit float stereo at 44100 Hz for every source; a byte position counts
/// that data from the source's first frame, 8 bytes per frame. Volume is a linear gain, times are
/// milliseconds where an argument says `ms`.
///
/// Threads: any thread may call, also inside a sync callback. Sync callbacks run on a thread of the library,
/// one at a time, in the order in which their events are played.
///
/// Errors: a call with handle 0, a freed handle or an unknown attribute has no effect and returns FALSE, 0,
/// BASS_ACTIVE_STOPPED, all bits set (positions, lengths, data) or a negative number of seconds.

using DWORD = std::uint32_t;
using QWORD = std::uint64_t;
using BOOL = int;
using HSTREAM = DWORD;
using HSYNC = DWORD;

/// Returned by BASS_ChannelGetPosition and BASS_ChannelGetLength on failure; also the length of a live
/// stream.
inline constexpr QWORD BASS_QWORD_ERROR = ~QWORD{0};
/// Returned by BASS_ChannelGetData on failure.
inline constexpr DWORD BASS_DWORD_ERROR = ~DWORD{0};

inline constexpr DWORD BASS_ACTIVE_STOPPED = 0;
inline constexpr DWORD BASS_ACTIVE_PLAYING = 1;
/// Waiting for data: a network stream that connects, or any after an underrun. Continues by itself.
inline constexpr DWORD BASS_ACTIVE_STALLED = 2;
inline constexpr DWORD BASS_ACTIVE_PAUSED = 3;

/// Gain of a channel, 0 silent .. 1 unchanged.
inline constexpr DWORD BASS_ATTRIB_VOL = 2;
/// Balance of a channel, -1 left only .. 0 both unchanged .. +1 right only.
inline constexpr DWORD BASS_ATTRIB_PAN = 3;

/// The last frame of the source has been played, or the stream has failed.
inline constexpr DWORD BASS_SYNC_END = 2;
/// A slide of BASS_ATTRIB_VOL or BASS_ATTRIB_PAN has reached its target.
inline constexpr DWORD BASS_SYNC_SLIDE = 5;
/// The sound server has removed the sink that was played to, as when headphones are pulled out. What plays
/// goes on, on another one or when there is one.
inline constexpr DWORD BASS_SYNC_SINK_REMOVED = 0x100;
/// Flag bit of a sync type: the sync is removed after it has fired once.
inline constexpr DWORD BASS_SYNC_ONETIME = 0x80000000;

inline constexpr DWORD BASS_POS_BYTE = 0;
/// Flag: read the file ahead on another thread. Accepted, but files always are.
inline constexpr DWORD BASS_ASYNCFILE = 0x40000000;
/// BASS_ChannelGetData: 512 magnitudes of a 1024-frame FFT.
inline constexpr DWORD BASS_DATA_FFT1024 = 0x80000002;

/// A sync callback: the sync, the channel it belongs to, data of the event (0), and the pointer given at
/// registration.
using SYNCPROC = void(HSYNC handle, DWORD channel, DWORD data, void* user);
/// Receives the raw bytes of a network stream while they are downloaded.
using DOWNLOADPROC = void(const void* buffer, DWORD length, void* user);

/// Arguments of BASS_ChannelGetTags: Ogg comments ("TITLE=", "ARTIST=", "ALBUM=", each terminated by a NUL),
/// the ICY headers of the server's response (lines like "icy-name: NAME"), and the last packet of ICY
/// metadata ("StreamTitle='TITLE';").
inline constexpr DWORD BASS_TAG_OGG = 2;
inline constexpr DWORD BASS_TAG_ICY = 4;
inline constexpr DWORD BASS_TAG_META = 5;

/// Starts the library. `device` must be -1 (the default output device), `freq` 44100, the remaining arguments
/// 0 and null. A thread of the library opens the device, and retries until there is one; streams wait
/// meanwhile. FALSE when there is no kind of output at all, or when the library is initialised already.
BOOL BASS_Init(int device, DWORD freq, DWORD flags, void* window, void* classId);

/// Option of BASS_SetConfig: the ReplayGain that is applied to streams, in addition to their volume. A stream
/// that follows another starts with its own gain; one without tags is not changed. The gain is limited so
/// that the peak in the tags does not clip; a missing peak counts as full scale. A change of the option
/// slides. Does not affect taps and BASS_ChannelGetData.
inline constexpr DWORD BASS_CONFIG_REPLAYGAIN = 0x10000;
inline constexpr DWORD BASS_REPLAYGAIN_OFF = 0; ///< The default.
/// The track's gain, or if missing the album's.
inline constexpr DWORD BASS_REPLAYGAIN_TRACK = 1;
/// The album's gain, or if missing the track's.
inline constexpr DWORD BASS_REPLAYGAIN_ALBUM = 2;

/// Sets an option for all streams, also before BASS_Init. FALSE for an unknown option or value.
BOOL BASS_SetConfig(DWORD option, DWORD value);

/// Ends all streams, the device and the library's threads. Threads that hang (in the device, in a name
/// look-up) are abandoned after 200 ms, so call it last before the process ends. FALSE when the library is
/// not initialised.
BOOL BASS_Free();

/// Opens a local file; the bytes of `file` are its path, never an address. The content decides the format,
/// not the extension. `mem` must be FALSE, `offset` and `length` 0 (the whole file). Returns a stopped stream
/// at once; a worker opens the file, and BASS_StreamGetStatus reports the result. A file that cannot be
/// opened ends its stream (BASS_SYNC_END); other calls then return the same as for handle 0. 0 when the
/// library is not initialised.
HSTREAM BASS_StreamCreateFile(BOOL mem, const void* file, QWORD offset, QWORD length, DWORD flags);
/// As BASS_StreamCreateFile, for one format only: native or Ogg FLAC, Monkey's Audio, Opus, WavPack.
HSTREAM BASS_FLAC_StreamCreateFile(BOOL mem, const void* file, QWORD offset, QWORD length, DWORD flags);
HSTREAM BASS_APE_StreamCreateFile(BOOL mem, const void* file, QWORD offset, QWORD length, DWORD flags);
HSTREAM BASS_OPUS_StreamCreateFile(BOOL mem, const void* file, QWORD offset, QWORD length, DWORD flags);
HSTREAM BASS_WV_StreamCreateFile(BOOL mem, const void* file, QWORD offset, QWORD length, DWORD flags);

/// As BASS_StreamCreateFile for an http or https address; follows redirects between these two, and opens the
/// first address in a radio station's playlist (m3u, pls). `offset` and `flags` must be 0, `proc` null. 0 for
/// text that is not such an address.
HSTREAM BASS_StreamCreateURL(const char* url, DWORD offset, DWORD flags, DOWNLOADPROC* proc, void* user);

/// Results of BASS_StreamGetStatus.
inline constexpr DWORD BASS_STREAM_NONE = 0;       ///< no such stream
inline constexpr DWORD BASS_STREAM_CONNECTING = 1; ///< being opened; no frame has been decoded yet
inline constexpr DWORD BASS_STREAM_OPEN = 2;
inline constexpr DWORD BASS_STREAM_NOT_FOUND = 16;   ///< Failed, as all from here on: no such file.
inline constexpr DWORD BASS_STREAM_UNREADABLE = 17;  ///< not a regular file, no permission, or a read error
inline constexpr DWORD BASS_STREAM_NO_AUDIO = 18;    ///< holds no sound that can be decoded
inline constexpr DWORD BASS_STREAM_NO_NAME = 19;     ///< the host name does not resolve
inline constexpr DWORD BASS_STREAM_REFUSED = 20;     ///< no connection: refused, unreachable, reset
inline constexpr DWORD BASS_STREAM_TIMEOUT = 21;     ///< no answer in time
inline constexpr DWORD BASS_STREAM_HTTP_STATUS = 22; ///< the server answered with an error
inline constexpr DWORD BASS_STREAM_CERTIFICATE = 23; ///< the server's certificate is not trusted
inline constexpr DWORD BASS_STREAM_LOST = 24;        ///< the connection broke off, and reconnecting failed

/// One of the BASS_STREAM_ values; a failed stream keeps its value until it is freed. With
/// BASS_STREAM_HTTP_STATUS, `httpStatus` (may be null) receives the status code (404, 503, ...).
DWORD BASS_StreamGetStatus(HSTREAM handle, DWORD* httpStatus);

/// Kinds of sources for BASS_ChannelSetNext.
inline constexpr DWORD BASS_SOURCE_NONE = 0;
inline constexpr DWORD BASS_SOURCE_FILE = 1; ///< as by BASS_StreamCreateFile, and so on
inline constexpr DWORD BASS_SOURCE_FLAC = 2;
inline constexpr DWORD BASS_SOURCE_APE = 3;
inline constexpr DWORD BASS_SOURCE_OPUS = 4;
inline constexpr DWORD BASS_SOURCE_WV = 5;
inline constexpr DWORD BASS_SOURCE_URL = 6;

/// Sets the source that follows when `handle` ends; BASS_SOURCE_NONE and null for none. It is opened shortly
/// before the end. Its first frame is mixed directly after the last one of `handle`, with the gain, balance
/// and slides of `handle`. BASS_SYNC_END of `handle` fires when that frame is played.
///
/// The next creation call after `handle` has ended or was freed returns the prepared or playing stream if it
/// is for the same source, and ends it if not. Until then the stream belongs to `handle`: setting another
/// source, seeking and pausing discard what was mixed ahead.
BOOL BASS_ChannelSetNext(DWORD handle, DWORD kind, const char* source);

/// Ends a stream: it is silent at once, and none of its syncs starts after this call. Never waits for a
/// server or a disk. Allowed inside the stream's own sync.
BOOL BASS_StreamFree(HSTREAM handle);

/// One of the BASS_ACTIVE_ values.
DWORD BASS_ChannelIsActive(DWORD handle);
/// Starts or resumes. A channel that has ended plays again from its first frame, and so does any with
/// `restart`.
BOOL BASS_ChannelPlay(DWORD handle, BOOL restart);
/// Pauses a playing or stalled channel; FALSE on any other.
BOOL BASS_ChannelPause(DWORD handle);

/// Moves an attribute to `value` linearly over `ms`, from the current value of a slide under way. The slide
/// of a stopped or paused channel waits; that of a channel which connects, seeks or has no device is finished
/// at once.
BOOL BASS_ChannelSlideAttribute(DWORD handle, DWORD attrib, float value, DWORD ms);
BOOL BASS_ChannelIsSliding(DWORD handle, DWORD attrib);
/// Sets an attribute and ends its slide. The mixer moves to the value over 5 ms, to avoid a click; the change
/// is played after the device's latency.
BOOL BASS_ChannelSetAttribute(DWORD handle, DWORD attrib, float value);
BOOL BASS_ChannelGetAttribute(DWORD handle, DWORD attrib, float* value);

/// Registers a callback for one of the BASS_SYNC_ values; `parameter` must be 0. 0 on failure.
HSYNC BASS_ChannelSetSync(DWORD handle, DWORD type, QWORD parameter, SYNCPROC* proc, void* user);

/// The position that is being played, in bytes. Moves backwards only by BASS_ChannelSetPosition and a
/// restart.
QWORD BASS_ChannelGetPosition(DWORD handle, DWORD mode);
/// Seeks to the frame that contains `pos`, or to the end if that is past it. A seek during a fade to silence
/// is done after the fade. FALSE when the source cannot seek.
BOOL BASS_ChannelSetPosition(DWORD handle, QWORD pos, DWORD mode);
/// The length in bytes; exact where the container states it.
QWORD BASS_ChannelGetLength(DWORD handle, DWORD mode);
/// Seconds of a byte position; negative on failure and for BASS_QWORD_ERROR.
double BASS_ChannelBytes2Seconds(DWORD handle, QWORD pos);
/// Byte position of a time, rounded down to a whole frame; negative times are the start.
QWORD BASS_ChannelSeconds2Bytes(DWORD handle, double seconds);

/// Copies the tags of the frame that is being played, as the bytes that were sent, at most `size`. Returns
/// their number; 0 when there are none.
DWORD BASS_ChannelGetTags(DWORD handle, DWORD tags, char* text, DWORD size);

/// BASS_DATA_FFT1024: writes 512 floats, the magnitudes of the last 1024 frames played (channels averaged,
/// Hann window), scaled so that a full-scale sine in the middle of a bin gives 1.0. Returns the number of
/// bytes written.
DWORD BASS_ChannelGetData(DWORD handle, void* buffer, DWORD request);
