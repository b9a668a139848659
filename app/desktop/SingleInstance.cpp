#include "app/desktop/SingleInstance.h"

#include <QByteArray>
#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusError>
#include <QDBusMessage>
#include <QDeadlineTimer>
#include <QFile>
#include <QTimer>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <utility>

namespace app {
namespace {

using namespace std::chrono_literals;

/// A player that ends may take two seconds to store everything.
constexpr auto answerLimit = 5s;
/// As MPRIS: after the window has had time to show.
constexpr auto publishAfter = 500ms;

const QString serviceName = QStringLiteral("org.tulplayer.Tulplayer");
/// A player that was started beside another, or before it, has this one.
const QString otherName = QStringLiteral("org.mpris.MediaPlayer2.tulplayer");
const QString objectPath = QStringLiteral("/org/tulplayer/Tulplayer");
const QString applicationInterface = QStringLiteral("org.freedesktop.Application");
const QString statusInterface = QStringLiteral("org.tulplayer.Tulplayer");

/// Without an address the bus library would start a bus, which takes a while.
bool hasSessionBus() {
    const QString runtime = qEnvironmentVariable("XDG_RUNTIME_DIR");
    return !qEnvironmentVariableIsEmpty("DBUS_SESSION_BUS_ADDRESS") ||
           (!runtime.isEmpty() && QFile::exists(runtime + QStringLiteral("/bus")));
}

QVariantMap platformData() {
    QVariantMap data;
    const auto insert = [&](const QString& key, const char* variable) {
        const QString value = qEnvironmentVariable(variable);
        if (!value.isEmpty()) data.insert(key, value);
    };
    insert(ApplicationService::activationToken, "XDG_ACTIVATION_TOKEN");
    insert(ApplicationService::startupId, "DESKTOP_STARTUP_ID");
    return data;
}

/// Texts on the bus are UTF-8; names of files are bytes.
QString uriOf(const std::string& source) {
    const auto bytes = QByteArray::fromStdString(source);
    if (source.starts_with('/'))
        return QString::fromLatin1("file://" + QByteArray(bytes).toPercentEncoding("/"));
    return QString::fromLatin1(bytes.toPercentEncoding("!#$%&'()*+,/:;=?@[]"));
}

QDBusMessage makeCall(const QString& service, const QString& interface, const QString& method) {
    QDBusMessage call = QDBusMessage::createMethodCall(service, objectPath, interface, method);
    call.setAutoStartService(false);
    return call;
}

QDBusMessage makeAction(const CommandLine::Control& control) {
    QVariantList parameter;
    if (!control.value.empty()) parameter << QString::fromStdString(control.value);
    return makeCall(serviceName, applicationInterface, QStringLiteral("ActivateAction"))
           << QString::fromStdString(control.action) << parameter << platformData();
}

QDBusMessage makeOpen(const std::vector<std::string>& sources) {
    QStringList uris;
    for (const std::string& source : sources)
        uris << uriOf(source);
    return makeCall(serviceName, applicationInterface, QStringLiteral("Open")) << uris << platformData();
}

QDBusMessage makeHandOver(const CommandLine& line) {
    if (!line.controls.empty()) return makeAction(line.controls.front());
    if (!line.sources.empty()) return makeOpen(line.sources);
    return makeCall(serviceName, applicationInterface, QStringLiteral("Activate")) << platformData();
}

QDBusMessage send(const QDBusMessage& call, const QDeadlineTimer& deadline) {
    const auto limit = static_cast<int>(std::max<qint64>(deadline.remainingTime(), 1));
    return QDBusConnection::sessionBus().call(call, QDBus::Block, limit);
}

bool isAnswered(const QDBusMessage& reply) {
    return reply.type() == QDBusMessage::ReplyMessage;
}

/// The name has no owner.
bool isMissing(const QDBusMessage& reply) {
    return QDBusError(reply).type() == QDBusError::ServiceUnknown ||
           reply.errorName() == QLatin1String("org.freedesktop.DBus.Error.NameHasNoOwner");
}

/// The player ended before it answered, or hangs.
bool isUnanswered(const QDBusMessage& reply) {
    return isMissing(reply) || QDBusError(reply).type() == QDBusError::NoReply;
}

/// The connection that has the name; empty for none.
QString nameOwner() {
    return QDBusConnection::sessionBus().interface()->serviceOwner(serviceName);
}

/// To the one that has the name, or any other.
QDBusMessage sendToAny(const QDBusMessage& call, const QDeadlineTimer& deadline) {
    const QDBusMessage reply = send(call, deadline);
    if (!isMissing(reply)) return reply;
    QDBusMessage again = makeCall(otherName, call.interface(), call.member());
    again.setArguments(call.arguments());
    return send(again, deadline);
}

void print(const QDBusMessage& reply, CommandLine::Status form) {
    const auto status = qdbus_cast<QVariantMap>(reply.arguments().value(0));
    std::puts((form == CommandLine::Status::json ? statusJson(status) : statusLine(status)).constData());
}

} // namespace

SingleInstance::SingleInstance() : m_application(m_object), m_status(m_object) {}

SingleInstance::Start SingleInstance::start(const CommandLine& line) {
    if (line.isNewWindow || !line.demoScreenshot.empty()) return Start::another;
    const bool isOnBus = hasSessionBus() && QDBusConnection::sessionBus().isConnected();
    if (line.controlsPlayer()) {
        const Start controlled = isOnBus ? control(line) : Start::notRunning;
        const bool starts = line.controls.size() == 1 && line.controls.front().action == "play-pause" &&
                            line.status == CommandLine::Status::none;
        if (controlled != Start::notRunning || !starts) return controlled;
    }
    return isOnBus ? claim(makeHandOver(line)) : Start::withoutBus;
}

SingleInstance::Start SingleInstance::control(const CommandLine& line) {
    const QDeadlineTimer deadline(answerLimit);
    std::vector<QDBusMessage> calls;
    for (const CommandLine::Control& control : line.controls)
        calls.push_back(makeAction(control));
    if (line.status != CommandLine::Status::none)
        calls.push_back(makeCall(serviceName, statusInterface, QStringLiteral("Status")));
    QDBusMessage reply;
    for (const QDBusMessage& call : calls) {
        reply = sendToAny(call, deadline);
        if (!isAnswered(reply)) return isMissing(reply) ? Start::notRunning : Start::noAnswer;
    }
    if (line.status != CommandLine::Status::none) print(reply, line.status);
    return Start::handedOver;
}

/// Of several that start at once, the bus gives the name to one. The others find its object there already,
/// since that comes before the name; where it ends before it has answered, one of them takes its place.
SingleInstance::Start SingleInstance::claim(const QDBusMessage& handOver) {
    const QDeadlineTimer deadline(answerLimit);
    publish();
    do {
        if (QDBusConnection::sessionBus().registerService(serviceName)) return Start::primary;
        const QString owner = nameOwner();
        const QDBusMessage reply = send(handOver, deadline);
        if (isAnswered(reply)) return Start::handedOver;
        // One that hangs has got the call: it must not get it twice.
        if (!isUnanswered(reply) || nameOwner() == owner) return Start::noAnswer;
    } while (!deadline.hasExpired());
    return Start::noAnswer;
}

void SingleInstance::publish() {
    if (!std::exchange(m_isPublished, true))
        QDBusConnection::sessionBus().registerObject(objectPath, &m_object, QDBusConnection::ExportAdaptors);
}

void SingleInstance::serve(FenAppDelegate& delegate) {
    m_application.serve(delegate);
    m_status.serve(delegate);
    if (!m_isPublished) QTimer::singleShot(publishAfter, &m_object, [this] { publish(); });
}

} // namespace app
