// serve: serves the Ogg stream that comes on standard input as the player serves what it encodes, and writes
// its port. The server alone, for measuring it beside others.
#include "platform/bass/sharing/ListenerServer.h"
#include "platform/bass/sharing/OggPageReader.h"

#include <array>
#include <cstdio>
#include <unistd.h>

int main() {
    bass::PageQueue pages;
    pages.setBurst(40000);
    const auto server = bass::ListenerServer::open(0, pages);
    if (!server) return 1;
    std::printf("%u\n", server->port());
    std::fflush(stdout);
    bass::OggPageReader reader([&](bass::OggPageReader::Page page) {
        page.isHeader ? pages.addHeader(std::move(page.bytes)) : pages.add(std::move(page.bytes));
    });
    std::array<std::byte, 16384> buffer;
    for (ssize_t count = 0; (count = read(STDIN_FILENO, buffer.data(), buffer.size())) > 0;) {
        if (!reader.read(std::span(buffer).first(static_cast<std::size_t>(count)))) break;
        pages.setBitsPerSecond(reader.bitsPerSecond());
        server->wake();
    }
}
