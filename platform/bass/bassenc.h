#pragma once

#include "platform/bass/bass.h"

/// The audio library's encoder add-on as the core calls it: an external program that encodes what a channel
/// plays, and a server that lets others hear it.
///
/// The encoder hears a channel's frames after decoding, before volume, balance and slides, as 16-bit
/// little-endian stereo at 44100 Hz whatever the source holds. While its channel does not play it gets
/// silence in real time, so that its listeners stay. An encoder that fails or stalls never holds up playback.
///
/// Threads and errors: as in platform/bass/bass.h. Nothing here is called back.

using HENCODE = DWORD;

/// BASS_Encode_Start: the program gets samples only, no WAV header before them.
inline constexpr DWORD BASS_ENCODE_NOHEAD = 1;

/// Would receive the encoded data.
using ENCODEPROC = void(HENCODE handle, DWORD channel, const void* buffer, DWORD length, void* user);
/// Would decide on a client that connects.
using ENCODECLIENTPROC = BOOL(HENCODE handle, BOOL connect, const char* client, char* headers, void* user);

/// Starts the program of `cmdline` (words parted by spaces, double quotes around a word with spaces; no
/// shell), which reads samples from its standard input and writes an Ogg stream to its standard output. Its
/// name is looked up from the current working directory when it has a slash. `channel` is what it hears
/// first; the encoder outlives it. `flags` must be BASS_ENCODE_NOHEAD, `proc` null. 0 when the channel does
/// not exist or the program can't be started.
HENCODE BASS_Encode_Start(DWORD channel, const char* cmdline, DWORD flags, ENCODEPROC* proc, void* user);

/// Serves the encoded stream over HTTP to any number of clients. `port` is the number of a TCP port on all
/// local addresses; "0" takes one that is free. A new client gets up to `burst` bytes of what was encoded
/// lately, of which `buffer` bytes are kept. `flags` must be 0, `proc` null. Answers the port; 0 when it is
/// taken, or when the encoder has a server already.
DWORD BASS_Encode_ServerInit(HENCODE handle, const char* port, DWORD buffer, DWORD burst, DWORD flags,
                             ENCODECLIENTPROC* proc, void* user);

/// What clients that connect from now on are told that the stream is called (icy-name), in UTF-8. Before that
/// it is "Tulplayer".
BOOL BASS_Encode_ServerSetName(HENCODE handle, const char* name);

/// How many clients are sent the stream now. One that has left counts until something was sent in vain, a
/// second or so.
DWORD BASS_Encode_ServerGetCount(HENCODE handle);

/// Lets the encoder hear another channel; its server and clients stay. With a channel that does not exist it
/// hears none, and the answer is FALSE.
BOOL BASS_Encode_SetChannel(HENCODE handle, DWORD channel);

/// Ends the program and the server, and drops its clients.
BOOL BASS_Encode_Stop(HENCODE handle);

/// BASS_ACTIVE_PLAYING while the program runs, else BASS_ACTIVE_STOPPED.
DWORD BASS_Encode_IsActive(HENCODE handle);
