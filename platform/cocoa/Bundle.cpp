#include "platform/cocoa/Bundle.h"

#include <QFile>

namespace cocoa::Bundle {

QString pathForResource(const QString& name, const QString& type) {
    const QString path = QLatin1String(":/") + name + QLatin1Char('.') + type;
    return QFile::exists(path) ? path : QString();
}

QString shortVersionString() {
    return QStringLiteral(TUL_VERSION);
}

} // namespace cocoa::Bundle
