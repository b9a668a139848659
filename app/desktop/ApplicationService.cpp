#include "app/desktop/ApplicationService.h"

#include "app/FenAppDelegate.h"
#include "app/FileTypes.h"
#include "app/desktop/raiseWindow.h"
#include "controls/CustomWindow.h"
#include "core/player/TulPlayer.h"

#include <chrono>
#include <utility>

namespace app {
namespace {

using namespace std::chrono_literals;

constexpr auto openingInterval = 100ms;

void setVolume(FenPlayerController& controller, double now, const QString& text) {
    bool isNumber = false;
    const double value = text.toInt(&isNumber) / 100.0;
    if (!isNumber) return;
    const bool isDifference = text.startsWith('+') || text.startsWith('-');
    controller.setVolume(isDifference ? now + value : value);
}

void perform(FenAppDelegate& delegate, const QString& action, const QVariantList& parameter) {
    FenPlayerController& controller = *delegate.playerController;
    if (action == QLatin1String("play-pause")) return controller.playPause();
    if (action == QLatin1String("next")) return controller.next();
    if (action == QLatin1String("previous")) return controller.previous();
    if (action == QLatin1String("stop")) return controller.stop();
    if (action == QLatin1String("volume") && !parameter.isEmpty())
        setVolume(controller, delegate.player->volume, parameter.front().toString());
}

} // namespace

const QString ApplicationService::activationToken = QStringLiteral("activation-token");
const QString ApplicationService::startupId = QStringLiteral("desktop-startup-id");

ApplicationService::ApplicationService(QObject& service) : QDBusAbstractAdaptor(&service) {
    m_opening.setInterval(openingInterval);
    m_opening.callOnTimeout([this] { openWaiting(); });
}

void ApplicationService::serve(FenAppDelegate& delegate) {
    m_delegate = &delegate;
    for (const auto& task : std::exchange(m_tasks, {}))
        task();
}

void ApplicationService::run(std::function<void()> task) {
    m_delegate ? task() : m_tasks.push_back(std::move(task));
}

void ApplicationService::Activate(const QVariantMap& platformData) {
    run([this, token = platformData.value(activationToken).toString()] {
        raiseWindow(*m_delegate->window, token);
    });
}

void ApplicationService::Open(const QStringList& uris, const QVariantMap& platformData) {
    run([this, uris] {
        for (const QString& uri : uris)
            m_sources.push_back(sourceFromAddress(uri.toStdString()));
        openWaiting();
    });
    Activate(platformData);
}

/// A prompt that is open takes no commands.
void ApplicationService::openWaiting() {
    if (!FenAppDelegate::takesCommands()) return m_opening.start();
    m_opening.stop();
    m_delegate->appendAndPlay(std::exchange(m_sources, {}));
}

void ApplicationService::ActivateAction(const QString& action, const QVariantList& parameter,
                                        const QVariantMap& /*platformData*/) {
    run([this, action, parameter] { perform(*m_delegate, action, parameter); });
}

} // namespace app
