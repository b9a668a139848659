#pragma once

#include <QMimeData>
#include <QString>
#include <QStringList>

#include <map>
#include <memory>
#include <optional>

namespace cocoa {

/// The data of a drag: strings by type.
class Pasteboard {
public:
    Pasteboard() = default;
    /// Takes the strings of `types` from `data`; does not fetch other formats.
    Pasteboard(const QMimeData& data, const QStringList& types);

    void setString(const QString& string, const QString& type) { m_strings[type] = string; }
    /// None when there is no string of this type.
    std::optional<QString> stringForType(const QString& type) const;
    bool isEmpty() const { return m_strings.empty(); }

    std::unique_ptr<QMimeData> mimeData() const;

private:
    std::map<QString, QString> m_strings;
};

} // namespace cocoa
