#include "app/search/FoldedText.h"

#include <QChar>
#include <QStringDecoder>

#include <algorithm>
#include <array>
#include <memory>

namespace app {
namespace {

/// Nonspacing marks from this combining class on are accents; those below make other letters.
constexpr unsigned char firstAccentClass = 10;

/// Letters and signs that are typed as others, but that Unicode does not decompose.
struct Replacement {
    char32_t letter;
    const char* typed;
};
constexpr Replacement replacements[] = {
    {U'ß', "ss"},     {U'ø', "o"},      {U'ł', "l"},      {U'đ', "d"},      {U'ð', "d"},
    {U'þ', "th"},     {U'æ', "ae"},     {U'œ', "oe"},     {U'ı', "i"},      {U'ħ', "h"},
    {U'ŧ', "t"},      {U'‘', "'"},      {U'’', "'"},      {U'ʼ', "'"},      {U'“', "\""},
    {U'”', "\""},     {U'\u2010', "-"}, {U'\u2011', "-"}, {U'\u2012', "-"}, {U'\u2013', "-"},
    {U'\u2014', "-"}, {U'\u2212', "-"},
};

bool isDropped(char32_t letter) {
    const QChar::Category category = QChar::category(letter);
    if (category == QChar::Other_Format) return true;
    return category == QChar::Mark_NonSpacing && QChar::combiningClass(letter) >= firstAccentClass;
}

std::string fold(char32_t letter) {
    const QString decomposed = QString::fromUcs4(&letter, 1).normalized(QString::NormalizationForm_KD);
    QString folded;
    for (const char32_t part : decomposed.toCaseFolded().toUcs4()) {
        const auto* typed = std::ranges::find(replacements, part, &Replacement::letter);
        if (typed != std::end(replacements))
            folded += QLatin1String(typed->typed);
        else if (!isDropped(part))
            folded += QString::fromUcs4(&part, 1);
    }
    return folded.toStdString();
}

/// Made once for 256 letters at a time: the toolkit's way takes a hundred times as long.
const std::string& foldedLetter(char32_t letter) {
    using Page = std::array<std::string, 256>;
    static std::array<std::unique_ptr<const Page>, 0x1100> pages;
    auto& page = pages[letter >> 8];
    if (!page) {
        auto made = std::make_unique<Page>();
        for (char32_t i = 0; i < made->size(); ++i)
            (*made)[i] = fold((letter & ~char32_t{0xff}) + i);
        page = std::move(made);
    }
    return (*page)[letter & 0xff];
}

/// Calls `take` with every letter's place in the text, and what it is folded to.
template <typename Take> void foldLetters(QStringView text, Take take) {
    for (qsizetype i = 0; i < text.size(); ++i) {
        const qsizetype place = i;
        char32_t letter = text[i].unicode();
        if (text[i].isHighSurrogate() && i + 1 < text.size() && text[i + 1].isLowSurrogate())
            letter = QChar::surrogateToUcs4(text[place], text[++i]);
        take(place, foldedLetter(letter));
    }
}

char lowered(char letter) {
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter + ('a' - 'A')) : letter;
}

} // namespace

void appendFolded(std::string& folded, const std::string& bytes) {
    const auto before = folded.size();
    folded += bytes;
    unsigned char bits = 0;
    for (auto i = before; i < folded.size(); ++i) {
        bits |= static_cast<unsigned char>(folded[i]);
        folded[i] = lowered(folded[i]);
    }
    const bool isAscii = bits < 0x80;
    if (isAscii) return;
    folded.resize(before);
    const auto size = static_cast<qsizetype>(bytes.size());
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    QString text = decoder.decode(QByteArrayView(bytes.data(), size));
    if (decoder.hasError()) text = QString::fromLatin1(bytes.data(), size);
    foldLetters(text, [&](qsizetype, const std::string& letter) { folded += letter; });
}

std::vector<std::string> foldedWords(const QString& text) {
    std::vector<std::string> words;
    const QStringList parts = text.simplified().split(u' ', Qt::SkipEmptyParts);
    for (const QString& part : parts) {
        std::string word;
        foldLetters(part, [&](qsizetype, const std::string& letter) { word += letter; });
        if (!word.empty()) words.push_back(std::move(word));
    }
    return words;
}

std::vector<TextRange> rangesOfWords(const std::vector<std::string>& words, const QString& text) {
    std::string folded;
    std::vector<qsizetype> places; // of the letter that each folded byte comes from
    foldLetters(text, [&](qsizetype place, const std::string& letter) {
        folded += letter;
        places.resize(folded.size(), place);
    });
    std::vector<TextRange> ranges;
    for (const std::string& word : words) {
        for (auto found = folded.find(word); found != std::string::npos;
             found = folded.find(word, found + word.size())) {
            const auto next = std::ranges::upper_bound(places, places[found + word.size() - 1]);
            const qsizetype end = next == places.end() ? text.size() : *next;
            ranges.push_back({places[found], end - places[found]});
        }
    }
    return ranges;
}

} // namespace app
