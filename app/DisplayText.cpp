#include "app/DisplayText.h"

#include <QStringDecoder>

#include <algorithm>

namespace app {
namespace {

/// More than any line shows: laying out a tag of megabytes would take seconds.
constexpr std::size_t maxShownBytes = 2000;

/// The number of bytes to show, without splitting a character.
qsizetype shownSize(const std::string& bytes) {
    std::size_t size = std::min(bytes.size(), maxShownBytes);
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
