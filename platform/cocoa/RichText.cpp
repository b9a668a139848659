#include "platform/cocoa/RichText.h"

#include <QFile>
#include <QSet>
#include <QTextCursor>
#include <QTextDocument>
#include <QTextEdit>

#include <algorithm>
#include <optional>
#include <vector>

namespace cocoa {
namespace {

constexpr qsizetype maxRtfBytes = 4 << 20;
constexpr std::size_t deepestGroup = 256;
constexpr char16_t bullet = u'•';

/// Windows-1252, bytes 0x80 to 0x9f; the others are Latin-1. 0 where the code page has no character.
constexpr char16_t windows1252[32] = {0x20ac, 0,      0x201a, 0x0192, 0x201e, 0x2026, 0x2020, 0x2021,
                                      0x02c6, 0x2030, 0x0160, 0x2039, 0x0152, 0,      0x017d, 0,
                                      0,      0x2018, 0x2019, 0x201c, 0x201d, 0x2022, 0x2013, 0x2014,
                                      0x02dc, 0x2122, 0x0161, 0x203a, 0x0153, 0,      0x017e, 0x0178};

QChar characterOfByte(unsigned char byte) {
    if (byte < 0x80 || byte > 0x9f) return QChar(char16_t(byte));
    const char16_t character = windows1252[byte - 0x80];
    return character == 0 ? QChar(QChar::ReplacementCharacter) : QChar(character);
}

/// Groups whose text is not the document's.
bool isForeignDestination(const QByteArray& word) {
    static const QSet<QByteArray> words{
        "fonttbl", "colortbl", "stylesheet", "info",      "pict",       "object",   "header",
        "footer",  "headerl",  "headerr",    "footerl",   "footerr",    "footnote", "field",
        "pntext",  "listtext", "listtable",  "themedata", "nonshppict", "xe",       "tc"};
    return words.contains(word);
}

class Reader {
public:
    Reader(const QByteArray& rtf, QTextDocument& document) : m_bytes(rtf), m_cursor(&document) {}

    void read() {
        while (m_at < m_bytes.size())
            readOne();
        flush();
    }

private:
    /// The state that a closing brace restores.
    struct Group {
        bool skipped = false;
        int bytesAfterUnicode = 1; ///< \ucN: stand-ins after each \u.
        QTextCharFormat format;
    };

    Group& group() { return m_groups.back(); }

    void readOne() {
        const char byte = m_bytes[m_at++];
        switch (byte) {
        case '{':
            return openGroup();
        case '}':
            return closeGroup();
        case '\\':
            return readControl();
        case '\r':
        case '\n':
            return;
        default:
            addCharacter(characterOfByte(static_cast<unsigned char>(byte)));
        }
    }

    void openGroup() {
        m_toSkip = 0;
        if (m_groups.size() >= deepestGroup) {
            ++m_tooDeep;
            return;
        }
        m_groups.push_back(group());
    }

    void closeGroup() {
        m_toSkip = 0;
        if (m_tooDeep > 0) {
            --m_tooDeep;
        } else if (m_groups.size() > 1) {
            flush();
            m_groups.pop_back();
        }
    }

    void readControl() {
        if (m_at >= m_bytes.size()) return;
        const char byte = m_bytes[m_at];
        if (isLetter(byte)) return readWord();
        ++m_at;
        switch (byte) {
        case '\'':
            return readHexByte();
        case '*':
            group().skipped = true;
            return; // "leave out unless known", and none of these is
        case '\\':
        case '{':
        case '}':
            return addCharacter(QLatin1Char(byte));
        case '~':
            return addCharacter(QChar(QChar::Nbsp));
        case '_':
            return addCharacter(QChar(0x2011));
        case '\r':
        case '\n':
            return endParagraph();
        default:
            return;
        }
    }

    void readHexByte() {
        bool hexadecimal = false;
        const uint value = m_bytes.mid(m_at, 2).toUInt(&hexadecimal, 16);
        m_at = std::min(m_at + 2, m_bytes.size());
        if (hexadecimal) addCharacter(characterOfByte(static_cast<unsigned char>(value)));
    }

    void readWord() {
        const qsizetype start = m_at;
        while (m_at < m_bytes.size() && isLetter(m_bytes[m_at]))
            ++m_at;
        const QByteArray word = m_bytes.mid(start, m_at - start);
        const qsizetype numberStart = m_at;
        if (m_at < m_bytes.size() && m_bytes[m_at] == '-') ++m_at;
        while (m_at < m_bytes.size() && isDigit(m_bytes[m_at]))
            ++m_at;
        bool hasNumber = false;
        const int number = m_bytes.mid(numberStart, m_at - numberStart).toInt(&hasNumber);
        if (m_at < m_bytes.size() && m_bytes[m_at] == ' ') ++m_at;
        obey(word, hasNumber ? std::optional(number) : std::nullopt);
    }

    void obey(const QByteArray& word, std::optional<int> number) {
        if (word == "bin") {
            m_at += std::clamp<qsizetype>(number.value_or(0), 0, m_bytes.size() - m_at);
        } else if (word == "u") {
            addCharacter(QChar(char16_t(number.value_or(0))));
            m_toSkip = group().bytesAfterUnicode;
        } else if (word == "uc") {
            group().bytesAfterUnicode = std::clamp(number.value_or(1), 0, 16);
        } else if (isForeignDestination(word)) {
            group().skipped = true;
        } else if (word == "par" || word == "sect" || word == "page") {
            endParagraph();
        } else if (word == "line") {
            addCharacter(QChar(QChar::LineSeparator));
        } else if (word == "tab") {
            addCharacter(QLatin1Char('\t'));
        } else if (word == "bullet") {
            addCharacter(QChar(bullet));
        } else {
            obeyFormat(word, number);
        }
    }

    void obeyFormat(const QByteArray& word, std::optional<int> number) {
        const bool on = number.value_or(1) != 0;
        if (word == "b") {
            changeFormat([&](auto& format) { format.setFontWeight(on ? QFont::Bold : QFont::Normal); });
        } else if (word == "i") {
            changeFormat([&](auto& format) { format.setFontItalic(on); });
        } else if (word == "fs") {
            // Half points.
            const double points = std::clamp(number.value_or(24), 8, 144) / 2.0;
            changeFormat([&](auto& format) { format.setFontPointSize(points); });
        } else if (word == "plain") {
            changeFormat([](auto& format) { format = QTextCharFormat(); });
        } else if (word == "pard") {
            m_paragraph = QTextBlockFormat();
        } else if (word == "li") {
            m_paragraph.setLeftMargin(points(number));
        } else if (word == "fi") {
            m_paragraph.setTextIndent(points(number));
        } else if (word == "sb") {
            m_paragraph.setTopMargin(points(number));
        } else if (word == "sa") {
            m_paragraph.setBottomMargin(points(number));
        } else if (word == "qc") {
            m_paragraph.setAlignment(Qt::AlignHCenter);
        }
    }

    /// From twentieths of a point.
    static double points(std::optional<int> twips) {
        return std::clamp(twips.value_or(0), -4000, 4000) / 20.0;
    }

    template <typename Change> void changeFormat(Change change) {
        flush();
        change(group().format);
    }

    void addCharacter(QChar character) {
        if (m_toSkip > 0) {
            --m_toSkip;
        } else if (!group().skipped && m_tooDeep == 0 && !character.isNull()) {
            m_text += character;
        }
    }

    void flush() {
        if (!m_text.isEmpty()) {
            m_cursor.setBlockFormat(m_paragraph);
            m_cursor.insertText(m_text, group().format);
        }
        m_text.clear();
    }

    void endParagraph() {
        m_toSkip = 0;
        if (group().skipped || m_tooDeep > 0) return;
        flush();
        m_cursor.setBlockFormat(m_paragraph);
        m_cursor.insertBlock(QTextBlockFormat(), group().format);
    }

    static bool isLetter(char byte) { return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z'); }
    static bool isDigit(char byte) { return byte >= '0' && byte <= '9'; }

    const QByteArray& m_bytes;
    qsizetype m_at = 0;
    QTextCursor m_cursor;
    std::vector<Group> m_groups{1};
    std::size_t m_tooDeep = 0; ///< Open groups beyond the deepest that is read.
    int m_toSkip = 0;          ///< Stand-ins for the \u before that are still to come.
    QTextBlockFormat m_paragraph;
    QString m_text; ///< Read but not yet in the document.
};

} // namespace

bool readRtf(const QByteArray& rtf, QTextDocument& document) {
    if (!rtf.startsWith("{\\rtf") || rtf.size() > maxRtfBytes) return false;
    document.clear();
    document.setUndoRedoEnabled(false);
    Reader(rtf, document).read();
    return true;
}

bool readRTFDFromFile(QTextEdit& view, const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) return false;
    const bool read = readRtf(file.read(maxRtfBytes + 1), *view.document());
    view.moveCursor(QTextCursor::Start); // else the view would scroll to the end
    return read;
}

} // namespace cocoa
