#include "platform/cocoa/Pasteboard.h"

namespace cocoa {

Pasteboard::Pasteboard(const QMimeData& data, const QStringList& types) {
    for (const QString& type : types) {
        if (data.hasFormat(type)) m_strings[type] = QString::fromUtf8(data.data(type));
    }
}

std::optional<QString> Pasteboard::stringForType(const QString& type) const {
    const auto found = m_strings.find(type);
    if (found == m_strings.end()) return std::nullopt;
    return found->second;
}

std::unique_ptr<QMimeData> Pasteboard::mimeData() const {
    auto data = std::make_unique<QMimeData>();
    for (const auto& [type, string] : m_strings)
        data->setData(type, string.toUtf8());
    return data;
}

} // namespace cocoa
