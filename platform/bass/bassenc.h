#pragma once

#include "platform/bass/bass.h"

/// The audio library's encoder add-on: an external program that encodes what a channel plays, and a server
/// that sends it to listeners.
///
/// The encoder gets a channel's frames after decoding, before volume, balance and slides, as 16-bit
/// little-endian stereo at 44100 Hz. While its channel does not play it gets silence in real time, so that
/// listeners stay connected. An encoder that fails or stalls never delays playback.
///
/// Threads and errors: as in platform/bass/bass.h. There are no callbacks.

using HENCODE = DWORD;

/// BASS_Encode_Start: send no WAV header before the samples.
inline constexpr DWORD BASS_ENCODE_NOHEAD = 1;

/// Receives the encoded data. Not supported.
using ENCODEPROC = void(HENCODE handle, DWORD channel, const void* buffer, DWORD length, void* user);
/// Accepts or rejects a client. Not supported.
using ENCODECLIENTPROC = BOOL(HENCODE handle, BOOL connect, const char* client, char* headers, void* user);

/// Starts the program of `cmdline` (words separated by spaces, a word with spaces in double quotes; no
/// shell), which reads samples from standard input and writes an Ogg stream to standard output. A name with a
/// slash is a path from the working directory, others are searched in PATH. `channel` is its first channel;
/// the encoder outlives it. `flags` must be BASS_ENCODE_NOHEAD, `proc` null. 0 when the channel does not
/// exist or the program can't be started.
HENCODE BASS_Encode_Start(DWORD channel, const char* cmdline, DWORD flags, ENCODEPROC* proc, void* user);

/// Serves the encoded stream over HTTP to any number of clients. `port` is the number of a TCP port on all
/// local addresses; "0" chooses a free one. A new client gets up to `burst` of the last `buffer` bytes at
/// once. `flags` must be 0, `proc` null. Returns the port; 0 when it is taken, or when the encoder has a
/// server already.
DWORD BASS_Encode_ServerInit(HENCODE handle, const char* port, DWORD buffer, DWORD burst, DWORD flags,
                             ENCODECLIENTPROC* proc, void* user);

/// Sets the stream's name (icy-name), in UTF-8, for clients that connect from now on. The default is
/// "Tulplayer".
BOOL BASS_Encode_ServerSetName(HENCODE handle, const char* name);

/// The number of connected clients. One that disconnects is counted until sending to it fails, which takes
/// about a second.
DWORD BASS_Encode_ServerGetCount(HENCODE handle);

/// Attaches the encoder to another channel; its server and clients stay. With an unknown channel it is
/// detached, and FALSE is returned.
BOOL BASS_Encode_SetChannel(HENCODE handle, DWORD channel);

/// Ends the program and the server, and disconnects the clients.
BOOL BASS_Encode_Stop(HENCODE handle);

/// BASS_ACTIVE_PLAYING while the program runs, else BASS_ACTIVE_STOPPED.
DWORD BASS_Encode_IsActive(HENCODE handle);
