#pragma once

#include <QMimeData>
#include <QString>
#include <QStringList>

#include <map>
#include <memory>
#include <optional>

namespace cocoa {

/// What a drag carries: strings by type.
class Pasteboard {
public:
    Pasteboard() = default;
    /// Takes what `data` holds of `types`; other formats are not fetched.
    Pasteboard(const QMimeData& data, const QStringList& types);

    void setString(const QString& string, const QString& type) { m_strings[type] = string; }
    /// Nothing when the pasteboard holds no string of this type.
    std::optional<QString> stringForType(const QString& type) const;
    bool isEmpty() const { return m_strings.empty(); }

    std::unique_ptr<QMimeData> mimeData() const;

private:
    std::map<QString, QString> m_strings;
};

} // namespace cocoa
