// Plays a file or an address through the audio library and prints events.
//
//     run-output FILE|URL [seek SECONDS | pause SECONDS | volume GAIN | pan BALANCE | wait SECONDS]...
//
// The commands run in order while it plays; then it plays to the end. TUL_AUDIO chooses the output.

#include "platform/bass/bass.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <future>
#include <string>
#include <thread>

namespace {

double seconds(DWORD stream, QWORD bytes) {
    return BASS_ChannelBytes2Seconds(stream, bytes);
}

void report(DWORD stream, const char* what) {
    std::printf("%8.3f s of %.3f: %s\n", seconds(stream, BASS_ChannelGetPosition(stream, BASS_POS_BYTE)),
                seconds(stream, BASS_ChannelGetLength(stream, BASS_POS_BYTE)), what);
    std::fflush(stdout);
}

void sleepFor(double seconds) {
    std::this_thread::sleep_for(std::chrono::duration<double>(seconds));
}

bool run(DWORD stream, const std::string& command, double value) {
    if (command == "wait") {
        sleepFor(value);
    } else if (command == "seek") {
        BASS_ChannelSetPosition(stream, BASS_ChannelSeconds2Bytes(stream, value), BASS_POS_BYTE);
    } else if (command == "volume") {
        BASS_ChannelSetAttribute(stream, BASS_ATTRIB_VOL, static_cast<float>(value));
    } else if (command == "pan") {
        BASS_ChannelSetAttribute(stream, BASS_ATTRIB_PAN, static_cast<float>(value));
    } else if (command == "pause") {
        BASS_ChannelPause(stream);
        sleepFor(value);
        BASS_ChannelPlay(stream, 0);
    } else {
        return false;
    }
    return true;
}

} // namespace

int main(int argc, char** argv) {
    if (argc < 2) return std::fputs("run-output FILE|URL [COMMAND VALUE]...\n", stderr), 2;
    if (!BASS_Init(-1, 44100, 0, nullptr, nullptr)) return std::fputs("no sound device\n", stderr), 1;
    const std::string source = argv[1];
    const DWORD stream = source.find("://") != std::string::npos
                             ? BASS_StreamCreateURL(argv[1], 0, 0, nullptr, nullptr)
                             : BASS_StreamCreateFile(0, argv[1], 0, 0, 0);
    if (stream == 0) return std::fputs("no sound in it\n", stderr), 1;
    std::promise<void> ended;
    BASS_ChannelSetSync(
        stream, BASS_SYNC_END | BASS_SYNC_ONETIME, 0,
        [](HSYNC, DWORD, DWORD, void* user) { static_cast<std::promise<void>*>(user)->set_value(); }, &ended);
    BASS_ChannelPlay(stream, 0);
    report(stream, "play");
    for (int i = 2; i + 1 < argc; i += 2) {
        if (!run(stream, argv[i], std::atof(argv[i + 1]))) return std::fprintf(stderr, "%s?\n", argv[i]), 2;
        report(stream, argv[i]);
    }
    ended.get_future().wait();
    report(stream, "end");
    BASS_StreamFree(stream);
    return 0;
}
