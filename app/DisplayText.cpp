#include "app/DisplayText.h"

#include <QStringDecoder>

#include <algorithm>

namespace app {
namespace {

/// No line is wide enough for more, and a tag of megabytes would take seconds to be laid out.
constexpr std::size_t longestShown = 2000;

/// How many of the bytes are shown: whole letters only.
qsizetype shownSize(const std::string& bytes) {
    std::size_t size = std::min(bytes.size(), longestShown);
    const auto cutsLetter = [&] { return size < bytes.size() && (bytes[size] & 0xc0) == 0x80; };
    while (size > 0 && cutsLetter())
        --size;
    return static_cast<qsizetype>(size);
}

} // namespace

std::optional<QString> displayText(const std::string& bytes) {
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    QString text = decoder.decode(QByteArrayView(bytes.data(), shownSize(bytes)));
    if (decoder.hasError()) return std::nullopt;
    return text;
}

QString timeText(double seconds) {
    const double minutes = std::clamp(seconds, 0.0, 1e9) / 60.0;
    const int wholeMinutes = static_cast<int>(minutes);
    return QString::asprintf("%02d:%02d", wholeMinutes, static_cast<int>((minutes - wholeMinutes) * 60.0));
}

} // namespace app
