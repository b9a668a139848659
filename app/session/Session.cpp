#include "app/session/Session.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>

namespace app {
namespace {

namespace key {
const QString volume = QStringLiteral("volume");
const QString balance = QStringLiteral("balance");
const QString session = QStringLiteral("session");
const QString list = QStringLiteral("list");
const QString changedAt = QStringLiteral("changedAt");
const QString index = QStringLiteral("index");
const QString source = QStringLiteral("source");
const QString isOpened = QStringLiteral("opened");
const QString position = QStringLiteral("position");
const QString page = QStringLiteral("page");
const QString place = QStringLiteral("place");
} // namespace key

/// Paths are bytes, JSON is text.
QString textOfBytes(const std::string& bytes) {
    return QString::fromLatin1(QByteArray::fromStdString(bytes).toPercentEncoding("/: "));
}

std::string bytesOfText(const QJsonValue& text) {
    return QByteArray::fromPercentEncoding(text.toString().toLatin1()).toStdString();
}

QJsonObject toObject(const Session::Whole& whole) {
    QJsonObject object{{key::list, textOfBytes(whole.list)},
                       {key::changedAt, static_cast<qint64>(whole.changedAt)},
                       {key::index, whole.resumption.index},
                       {key::source, textOfBytes(whole.resumption.source)},
                       {key::isOpened, whole.resumption.isOpened},
                       {key::position, whole.resumption.position},
                       {key::page, whole.page}};
    if (whole.place) object.insert(key::place, QJsonArray{whole.place->x(), whole.place->y()});
    return object;
}

Session::Whole wholeOf(const QJsonObject& object) {
    Session::Whole whole{.list = bytesOfText(object[key::list]),
                         .changedAt = object[key::changedAt].toInteger(),
                         .resumption = {.index = std::max(object[key::index].toInt(), 0),
                                        .source = bytesOfText(object[key::source]),
                                        .isOpened = object[key::isOpened].toBool(),
                                        .position = std::max(object[key::position].toDouble(), 0.0)},
                         .page = object[key::page].toInt(),
                         .place = {}};
    const QJsonArray place = object[key::place].toArray();
    if (place.size() == 2) whole.place = QPoint(place[0].toInt(), place[1].toInt());
    return whole;
}

} // namespace

bool Session::isSameButPosition(const Session& other) const {
    Session moved = *this;
    if (moved.whole && other.whole) moved.whole->resumption.position = other.whole->resumption.position;
    return moved == other;
}

QByteArray Session::toJson() const {
    QJsonObject object{{key::volume, volume}, {key::balance, balance}};
    if (whole) object.insert(key::session, toObject(*whole));
    return QJsonDocument(object).toJson();
}

std::optional<Session> Session::fromJson(const QByteArray& json) {
    const QJsonDocument document = QJsonDocument::fromJson(json);
    if (!document.isObject()) return std::nullopt;
    const QJsonObject object = document.object();
    Session session{.volume = std::clamp(object[key::volume].toDouble(Session().volume), 0.0, 1.0),
                    .balance = std::clamp(object[key::balance].toDouble(), -1.0, 1.0),
                    .whole = {}};
    if (object[key::session].isObject()) session.whole = wholeOf(object[key::session].toObject());
    return session;
}

} // namespace app
