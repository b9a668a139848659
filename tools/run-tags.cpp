#include "core/playlist/TulPlaylistEntry.h"

#include <cstdio>

/// run-tags FILE...: prints what the tag reader takes from each file. For trying it on files from the wild.
int main(int argc, char** argv) {
    for (int i = 1; i < argc; ++i) {
        TulPlaylistEntry entry(argv[i]);
        entry.loadCoverArt();
        std::printf(
            "%s\n  title  %s\n  line 2 %s\n  artist %s\n  album  %s\n  length %g s\n  cover  %d bytes\n",
            argv[i], entry.title.c_str(), entry.artistAlbum.c_str(), entry.artist.c_str(),
            entry.album.c_str(), entry.length, entry.coverArtSize);
    }
}
