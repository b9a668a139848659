#pragma once

#include <cstdint>

/// The audio library as the core calls it: opened sources ("streams") that play through one output device.
///
/// Units: sample data is interleaved 32-bit float stereo at 44100 Hz, whatever the source holds; a byte
/// position counts that data from the source's first frame, so 8 bytes are one frame. Volume is a linear
/// gain, times are milliseconds where an argument says `ms`.
///
/// Threads: every call may be made from any thread, also from inside a sync. Sync callbacks run on one thread
/// of the library's own, one at a time, in the order in which their events are played.
///
/// Errors: a call on handle 0, on a freed handle or with an unknown attribute has no effect and answers
/// FALSE, 0, BASS_ACTIVE_STOPPED, all bits set (positions, lengths, data) or a negative number of seconds, as
/// its type allows.

using DWORD = std::uint32_t;
using QWORD = std::uint64_t;
using BOOL = int;
using HSTREAM = DWORD;
using HSYNC = DWORD;

/// What BASS_ChannelGetPosition and BASS_ChannelGetLength answer on failure; also the length of a live
/// stream.
inline constexpr QWORD BASS_QWORD_ERROR = ~QWORD{0};
/// What BASS_ChannelGetData answers on failure.
inline constexpr DWORD BASS_DWORD_ERROR = ~DWORD{0};

inline constexpr DWORD BASS_ACTIVE_STOPPED = 0;
inline constexpr DWORD BASS_ACTIVE_PLAYING = 1;
/// Started, but without data: an address that is connecting or has run dry. Continues by itself.
inline constexpr DWORD BASS_ACTIVE_STALLED = 2;
inline constexpr DWORD BASS_ACTIVE_PAUSED = 3;

/// Gain of a channel, 0 silent .. 1 as stored.
inline constexpr DWORD BASS_ATTRIB_VOL = 2;
/// Balance of a channel, -1 left only .. 0 both as stored .. +1 right only.
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
/// The source may be read ahead on another thread. Every file is.
inline constexpr DWORD BASS_ASYNCFILE = 0x40000000;
/// BASS_ChannelGetData: 512 magnitudes of a 1024-frame FFT.
inline constexpr DWORD BASS_DATA_FFT1024 = 0x80000002;

/// A sync callback: the sync, the channel it belongs to, data of the event (0), and the pointer given at
/// registration.
using SYNCPROC = void(HSYNC handle, DWORD channel, DWORD data, void* user);
/// Receives the raw bytes of a network stream while they are downloaded.
using DOWNLOADPROC = void(const void* buffer, DWORD length, void* user);

/// What BASS_ChannelGetTags is asked for: comments of the container ("TITLE=", "ARTIST=", "ALBUM=", each
/// ended by a NUL), the fields of an internet radio's answer (lines "icy-name: NAME" and so on), its last
/// packet of metadata ("StreamTitle='TITLE';").
inline constexpr DWORD BASS_TAG_OGG = 2;
inline constexpr DWORD BASS_TAG_ICY = 4;
inline constexpr DWORD BASS_TAG_META = 5;

/// Starts the library. `device` -1 is the default output device, the only one offered; `freq` must be 44100,
/// the remaining arguments 0 and null. The device itself is opened by a thread of the library's own, again
/// and again until there is one; what plays meanwhile waits. FALSE when no device could ever be opened, or
/// when the library is initialised already.
BOOL BASS_Init(int device, DWORD freq, DWORD flags, void* window, void* classId);

/// Option of BASS_SetConfig: which ReplayGain of a stream's tags it is played with, beside its volume. That
/// of a stream that follows another takes effect with its first frame; without any tag the samples are played
/// as they are. The gain is limited so that the peak in the tags does not clip, or full scale where none is
/// said. What is played slides to a change. Not of what a tap or BASS_ChannelGetData gets.
inline constexpr DWORD BASS_CONFIG_REPLAYGAIN = 0x10000;
inline constexpr DWORD BASS_REPLAYGAIN_OFF = 0; ///< At first.
/// The track's, or where it says none the album's.
inline constexpr DWORD BASS_REPLAYGAIN_TRACK = 1;
/// The album's, or where it says none the track's.
inline constexpr DWORD BASS_REPLAYGAIN_ALBUM = 2;

/// Sets an option for all streams, also before BASS_Init. FALSE for an unknown option or value.
BOOL BASS_SetConfig(DWORD option, DWORD value);

/// Ends every stream, the device and the library's threads. What hangs (a device, a name look-up) is left
/// behind after a fifth of a second; call it last, before the process ends. FALSE when nothing was
/// initialised.
BOOL BASS_Free();

/// Opens a local file whatever its name holds; the bytes of `file` are a path. The content decides the
/// format, never the extension. `mem` must be FALSE, `offset` and `length` 0 (the whole file). The stream is
/// created at once, stopped at its first frame, and opened by a worker of its own: BASS_StreamGetStatus
/// reports what has become of it. A file that cannot be opened ends its stream (BASS_SYNC_END); every other
/// call then answers as for handle 0. 0 when the library is not initialised.
HSTREAM BASS_StreamCreateFile(BOOL mem, const void* file, QWORD offset, QWORD length, DWORD flags);
/// As BASS_StreamCreateFile, for one format each: native or Ogg FLAC, Monkey's Audio, Opus, WavPack.
HSTREAM BASS_FLAC_StreamCreateFile(BOOL mem, const void* file, QWORD offset, QWORD length, DWORD flags);
HSTREAM BASS_APE_StreamCreateFile(BOOL mem, const void* file, QWORD offset, QWORD length, DWORD flags);
HSTREAM BASS_OPUS_StreamCreateFile(BOOL mem, const void* file, QWORD offset, QWORD length, DWORD flags);
HSTREAM BASS_WV_StreamCreateFile(BOOL mem, const void* file, QWORD offset, QWORD length, DWORD flags);

/// As BASS_StreamCreateFile for an http or https address; follows redirects within these two, and opens the
/// first address that a list of a radio station (m3u, pls) names. `offset` and `flags` must be 0, `proc`
/// null. 0 for text that is no such address.
HSTREAM BASS_StreamCreateURL(const char* url, DWORD offset, DWORD flags, DOWNLOADPROC* proc, void* user);

/// What has become of a stream: BASS_StreamGetStatus.
inline constexpr DWORD BASS_STREAM_NONE = 0;       ///< no such stream
inline constexpr DWORD BASS_STREAM_CONNECTING = 1; ///< being opened; no frame has been there yet
inline constexpr DWORD BASS_STREAM_OPEN = 2;
inline constexpr DWORD BASS_STREAM_NOT_FOUND = 16;   ///< Failed, as all from here on: no such file.
inline constexpr DWORD BASS_STREAM_UNREADABLE = 17;  ///< no regular file, no permission, an error of the disk
inline constexpr DWORD BASS_STREAM_NO_AUDIO = 18;    ///< holds nothing that can be decoded
inline constexpr DWORD BASS_STREAM_NO_NAME = 19;     ///< the host's name does not resolve
inline constexpr DWORD BASS_STREAM_REFUSED = 20;     ///< no connection: refused, unreachable, reset
inline constexpr DWORD BASS_STREAM_TIMEOUT = 21;     ///< no answer in time
inline constexpr DWORD BASS_STREAM_HTTP_STATUS = 22; ///< the server answered with an error
inline constexpr DWORD BASS_STREAM_CERTIFICATE = 23; ///< the server's certificate is not trusted
inline constexpr DWORD BASS_STREAM_LOST = 24;        ///< broke off while it played, for good

/// One of the BASS_STREAM_ values; a failed stream keeps its until it is freed. With
/// BASS_STREAM_HTTP_STATUS, `httpStatus` (may be null) gets what the server answered (404, 503, ...).
DWORD BASS_StreamGetStatus(HSTREAM handle, DWORD* httpStatus);

/// How a source is opened: BASS_ChannelSetNext.
inline constexpr DWORD BASS_SOURCE_NONE = 0;
inline constexpr DWORD BASS_SOURCE_FILE = 1; ///< as by BASS_StreamCreateFile, and so on
inline constexpr DWORD BASS_SOURCE_FLAC = 2;
inline constexpr DWORD BASS_SOURCE_APE = 3;
inline constexpr DWORD BASS_SOURCE_OPUS = 4;
inline constexpr DWORD BASS_SOURCE_WV = 5;
inline constexpr DWORD BASS_SOURCE_URL = 6;

/// Names the source that is to follow when `handle` ends, or with BASS_SOURCE_NONE and null that none does.
/// It is opened shortly before the end, and its first frame is mixed right behind the last one of `handle`,
/// with the gain, balance and slides that `handle` has then. BASS_SYNC_END of `handle` fires when that frame
/// is played.
///
/// The next creation call after `handle` has ended or was freed returns the stream that is already prepared
/// or playing when it names this very source, and ends it when it names another. Until then it belongs to
/// `handle`: naming another source, seeking and pausing discard what was mixed ahead.
BOOL BASS_ChannelSetNext(DWORD handle, DWORD kind, const char* source);

/// Ends a stream: it falls silent at once, its syncs are removed and none of them starts after this call.
/// Never waits for a server or a disk. Allowed inside the stream's own sync.
BOOL BASS_StreamFree(HSTREAM handle);

/// One of the BASS_ACTIVE_ values.
DWORD BASS_ChannelIsActive(DWORD handle);
/// Starts or resumes. A channel stopped at its end plays again from its first frame. `restart` goes there
/// first.
BOOL BASS_ChannelPlay(DWORD handle, BOOL restart);
/// Pauses a playing or stalled channel; FALSE on any other.
BOOL BASS_ChannelPause(DWORD handle);

/// Moves an attribute to `value` linearly over `ms`; a slide under way is replaced and goes on from where it
/// is. The attribute changes while the channel plays; the slide of a stopped or paused channel waits, and
/// that of one that is silent, because it connects or seeks or there is no device, is done at once.
BOOL BASS_ChannelSlideAttribute(DWORD handle, DWORD attrib, float value, DWORD ms);
BOOL BASS_ChannelIsSliding(DWORD handle, DWORD attrib);
/// Sets an attribute and ends a slide of it. The sound follows within milliseconds, without a click.
BOOL BASS_ChannelSetAttribute(DWORD handle, DWORD attrib, float value);
BOOL BASS_ChannelGetAttribute(DWORD handle, DWORD attrib, float* value);

/// Registers a callback for one of the BASS_SYNC_ values; `parameter` must be 0. 0 on failure.
HSYNC BASS_ChannelSetSync(DWORD handle, DWORD type, QWORD parameter, SYNCPROC* proc, void* user);

/// What is being played now, in bytes. Never moves backwards but by BASS_ChannelSetPosition.
QWORD BASS_ChannelGetPosition(DWORD handle, DWORD mode);
/// Seeks to the frame that holds `pos`; past the end it goes to the end. A seek while the channel fades to
/// silence is done when that has ended. FALSE where the source cannot seek.
BOOL BASS_ChannelSetPosition(DWORD handle, QWORD pos, DWORD mode);
/// Exact where the container knows it.
QWORD BASS_ChannelGetLength(DWORD handle, DWORD mode);
/// Seconds of a byte position; negative on failure and for BASS_QWORD_ERROR.
double BASS_ChannelBytes2Seconds(DWORD handle, QWORD pos);
/// Byte position of a time, rounded down to a whole frame; negative times are the start.
QWORD BASS_ChannelSeconds2Bytes(DWORD handle, double seconds);

/// Copies what the stream says of the sound that is being played now, as the bytes that were sent, at most
/// `size` of them and no more than some thousands. Answers how many; 0 where nothing is said.
DWORD BASS_ChannelGetTags(DWORD handle, DWORD tags, char* text, DWORD size);

/// BASS_DATA_FFT1024: writes 512 floats, the magnitudes of the last 1024 frames played (channels averaged,
/// Hann window), scaled so that a full-scale sine in the middle of a bin gives 1.0. Answers the bytes read.
DWORD BASS_ChannelGetData(DWORD handle, void* buffer, DWORD request);
