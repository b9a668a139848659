#include "app/editing/SourceAddress.h"

#include "core/playlist/resolveEntrySource.h"

#include <QFile>
#include <QMimeData>
#include <QStringList>

namespace app {
namespace {

/// What may stand in an address as it is; so do the percent signs of what is encoded already.
const QByteArray addressSigns = QByteArrayLiteral("!#$&'()*+,/:;=?@[]");
const QByteArray pathSigns = QByteArrayLiteral("/");

} // namespace

QByteArray addressOf(const std::string& source) {
    const QByteArray bytes = QByteArray::fromStdString(source);
    if (isAddress(source)) return bytes.toPercentEncoding(addressSigns).replace("%25", "%");
    if (!source.starts_with('/')) return {};
    return QByteArrayLiteral("file://") + bytes.toPercentEncoding(pathSigns);
}

QByteArray addressList(const std::vector<std::string>& sources) {
    QByteArray list;
    for (const std::string& source : sources)
        if (const QByteArray address = addressOf(source); !address.isEmpty())
            list += address + QByteArrayLiteral("\r\n");
    return list;
}

std::unique_ptr<QMimeData> copyOf(const std::vector<std::string>& sources) {
    QStringList lines;
    for (const std::string& source : sources)
        lines << QFile::decodeName(QByteArray::fromStdString(source));
    auto data = std::make_unique<QMimeData>();
    data->setText(lines.join(QLatin1Char('\n')));
    data->setData(QStringLiteral("text/uri-list"), addressList(sources));
    return data;
}

} // namespace app
