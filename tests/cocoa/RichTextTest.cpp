#include "platform/cocoa/RichText.h"
#include "tests/support/TestApplication.h"

#include <QTextBlock>
#include <QTextDocument>

#include <gtest/gtest.h>

#include <random>

namespace {

std::string textOf(const QByteArray& body) {
    support::offscreenApplication();
    QTextDocument document;
    EXPECT_TRUE(cocoa::readRtf("{\\rtf1\\ansi " + body + "}", document)) << body.constData();
    return document.toPlainText().toStdString();
}

TEST(RichText, ReadsParagraphsAndCharactersAndSkipsOtherContent) {
    const struct {
        const char* body;
        const char* text;
    } cases[] = {
        {"One\\par\nTwo", "One\nTwo"},
        {"a\\line b\\tab c", "a\nb\tc"},
        {"\\bullet  x\\~y", "• x y"},
        {"brace \\{ \\} \\\\", "brace { } \\"},
        {"caf\\'e9 \\'93q\\'94", "café “q”"},
        {"\\u1053?\\u1086\\'3f", "Но"},
        {"\\u-10179?\\u-8704?", "😀"},                // a pair of halves, written as signed numbers
        {"{\\uc2\\u233ab}c{\\uc0\\u233 d}", "écéd"}, // how many stand-ins follow
        {"{\\fonttbl{\\f0 Roboto;}}{\\colortbl;\\red1;}a", "a"},
        {"{\\*\\generator x{\\b y}}a{\\info{\\title t}}b", "ab"},
        {"{\\pict 89504e47}{\\nonesuch z}a", "za"},
        {"a\\bin3 {}}b", "ab"},
        {"}}}a", "a"},
        {"a{b", "ab"},
        {"a\\'zz b\\", "a b}"},
    };
    for (const auto& each : cases)
        EXPECT_EQ(textOf(each.body), each.text) << each.body;
}

TEST(RichText, FormatsEndWithTheirGroup) {
    support::offscreenApplication();
    QTextDocument document;
    ASSERT_TRUE(cocoa::readRtf("{\\rtf1 {\\b\\fs32 Head}\\par\\pard\\li720\\fi-360 p{\\i q}\\b r\\b0 s\\par}",
                               document));
    const auto formatAt = [&](int position) {
        QTextCursor cursor(&document);
        cursor.setPosition(position + 1); // the format of the character before it
        return cursor.charFormat();
    };
    EXPECT_EQ(formatAt(0).fontWeight(), QFont::Bold);
    EXPECT_EQ(formatAt(0).fontPointSize(), 16);
    EXPECT_NE(formatAt(5).fontWeight(), QFont::Bold);
    EXPECT_TRUE(formatAt(6).fontItalic());
    EXPECT_FALSE(formatAt(7).fontItalic());
    EXPECT_EQ(formatAt(7).fontWeight(), QFont::Bold);
    EXPECT_EQ(formatAt(8).fontWeight(), QFont::Normal);
    EXPECT_EQ(document.findBlockByNumber(1).blockFormat().leftMargin(), 36);
    EXPECT_EQ(document.findBlockByNumber(1).blockFormat().textIndent(), -18);
}

TEST(RichText, OtherContentLeavesTheDocumentUnchanged) {
    support::offscreenApplication();
    QTextDocument document;
    document.setPlainText("before");
    for (const QByteArray& bytes :
         {QByteArray(), QByteArray("plain"), QByteArray("{\\html}"), QByteArray("{")}) {
        EXPECT_FALSE(cocoa::readRtf(bytes, document));
    }
    EXPECT_EQ(document.toPlainText(), "before");
}

TEST(RichText, HostileBytesAreHarmless) {
    EXPECT_EQ(textOf(QByteArray(1'000'000, '{') + "deep" + QByteArray(1'000'000, '}')), "");
    EXPECT_EQ(textOf("\\bin2147483647 x"), "");
    EXPECT_EQ(textOf("\\bin-5 x\\fs99999999999999999999 y\\li-2147483648 z\\u99999999999?"), "xyz");
    std::mt19937 random(1);
    const QByteArray alphabet = "{}\\\\\\'u-019*bifsar \n\xff";
    for (int round = 0; round < 300; ++round) {
        QByteArray bytes;
        for (int at = 0; at < 500; ++at)
            bytes += alphabet[qsizetype(random() % std::size_t(alphabet.size()))];
        textOf(bytes);
    }
}

} // namespace
