#include "app/DisplayText.h"

#include <QStringDecoder>

#include <algorithm>

namespace app {

std::optional<QString> displayText(const std::string& bytes) {
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    QString text = decoder.decode(QByteArrayView(bytes.data(), static_cast<qsizetype>(bytes.size())));
    if (decoder.hasError()) return std::nullopt;
    return text;
}

QString timeText(double seconds) {
    const double minutes = std::clamp(seconds, 0.0, 1e9) / 60.0;
    const int wholeMinutes = static_cast<int>(minutes);
    return QString::asprintf("%02d:%02d", wholeMinutes, static_cast<int>((minutes - wholeMinutes) * 60.0));
}

} // namespace app
