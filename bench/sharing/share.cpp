// share FILE... : plays the files one after the other, forever, and shares them on port 9090 (or PORT in the
// environment) with ./oggenc, until it is ended. For trying players by hand, and for the bench beside this.
#include "platform/bass/bass.h"
#include "platform/bass/bassenc.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <thread>

int main(int count, char** arguments) {
    if (count < 2 || !BASS_Init(-1, 44100, 0, nullptr, nullptr)) return 1;
    const char* port = std::getenv("PORT");
    HENCODE encoder = 0;
    for (int i = 0;; i = (i + 1) % (count - 1)) {
        const HSTREAM stream = BASS_StreamCreateFile(0, arguments[i + 1], 0, 0, 0);
        if (stream == 0) return 1;
        BASS_ChannelPlay(stream, 0);
        if (encoder == 0) {
            encoder = BASS_Encode_Start(stream, "./oggenc -r -R 44100 -M 160 -m 160 -", BASS_ENCODE_NOHEAD,
                                        nullptr, nullptr);
            std::printf("port %u\n", BASS_Encode_ServerInit(encoder, port ? port : "9090", 40000, 40000, 0,
                                                            nullptr, nullptr));
            std::fflush(stdout);
        } else {
            BASS_Encode_SetChannel(encoder, stream);
        }
        while (BASS_ChannelIsActive(stream) != BASS_ACTIVE_STOPPED)
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
        BASS_StreamFree(stream);
    }
}
