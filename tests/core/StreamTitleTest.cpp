#include "core/player/TulStreamTitle.h"

#include <gtest/gtest.h>

namespace {

using namespace std::string_literals;

TEST(StreamTitle, IsFoundInMalformedMetadata) {
    const struct {
        std::string metadata;
        std::string title;
    } cases[] = {
        {"StreamTitle='Band - Song';", "Band - Song"},
        {"StreamUrl='http://h/';streamtitle='Band - Song';StreamUrl='';", "Band - Song"},
        {"StreamTitle='Don't Stop 'Til You're Done';StreamUrl='';", "Don't Stop 'Til You're Done"},
        {"StreamTitle='Rock 'n';StreamUrl='x';", "Rock 'n"},
        {"StreamTitle='Rock 'n'; Roll';StreamUrl='x';", "Rock 'n'; Roll"},
        {"StreamTitle='Song';\x01\xff;garbage'", "Song"},
        {"StreamTitle='Cut off", "Cut off"},
        {"StreamTitle='Cut'", "Cut"},
        {"StreamTitle='';", ""},
        {"StreamUrl='x';", ""},
        {"", ""},
        {"StreamTitle='Band - text=\"Song\" song_spot=\"M\" id=\"0\"';", "Band - Song"},
        {"StreamTitle='title=\"Song\",artist=\"Band\",url=\"x=1\"';", "Band - Song"},
        {"StreamTitle='Band - Song adw_ad=\"true\" ms=\"3\"';", "Band - Song"},
        {"StreamTitle='2=\"';", "2=\""},
        {"StreamTitle=' \tTwo\r\nlines\x7f ';", "Two  lines"},
        {"StreamTitle='<b>&amp;';", "<b>&amp;"},
        {"StreamTitle='Caf\xc3\xa9';", "Café"},
        {"StreamTitle='Caf\xe9 \xc9t\xe9 \x96 Gr\xf6\xdf'e';", "Café Été – Größ'e"},
        {"StreamTitle='\xcc\xee\xf1\xea\xe2\xe0 - X';", "Москва - X"},
        {"StreamTitle='Caf\xc3", "Caf"},
        {"StreamTitle='" + std::string(4000, 'x') + "';", std::string(1000, 'x')},
    };
    for (const auto& [metadata, title] : cases)
        EXPECT_EQ(parseStreamTitle("", metadata, "").title, title) << metadata;
}

TEST(StreamTitle, TakesTheStationOfTheHeadersAndPrefersComments) {
    const auto said = parseStreamTitle("icy-br: 128\nICY-Name: R\xe4"
                                       "dio  \nicy-url: x\n",
                                       "StreamTitle='M';", "ARTIST=Band\0TITLE=Song\0ALBUM=Record\0"s);
    EXPECT_EQ(said, (TulStreamTitle{"Rädio", "Song", "Band", "Record"}));
    EXPECT_EQ(parseStreamTitle("icy-name:", "StreamTitle='M';", "ARTIST=Band\0"s).title, "M");
}

} // namespace
