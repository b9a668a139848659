#include "app/settings/Settings.h"

#include "core/player/TulLoudness.h"
#include "platform/cocoa/UserDefaults.h"

#include <algorithm>

namespace app {
namespace {

const QString restoresSessionKey = QStringLiteral("RestoresSession");
const QString showsNotificationsKey = QStringLiteral("ShowsNotifications");
const QString loudnessKey = QStringLiteral("Loudness");
const QString sharingNameKey = QStringLiteral("SharingName");
const QString sharingPortKey = QStringLiteral("SharingPort");
const QString textSizeKey = QStringLiteral("TextSize");
const QString pausesWhenSinkIsRemovedKey = QStringLiteral("PausesWhenSinkIsRemoved");
const QString keepsAwakeKey = QStringLiteral("KeepsAwake");

const QString trackLoudness = QStringLiteral("track");
const QString albumLoudness = QStringLiteral("album");
const QString noLoudness = QStringLiteral("off");

} // namespace

Settings::Settings(cocoa::UserDefaults& defaults) : m_defaults(defaults) {
    defaults.registerDefaults({{restoresSessionKey, false},
                               {showsNotificationsKey, true},
                               {loudnessKey, noLoudness},
                               {sharingNameKey, QStringLiteral("Tulplayer")},
                               {sharingPortKey, 9090},
                               {textSizeKey, minTextSize},
                               {pausesWhenSinkIsRemovedKey, true},
                               {keepsAwakeKey, true}});
}

bool Settings::restoresSession() const {
    return m_defaults.boolForKey(restoresSessionKey);
}

bool Settings::showsNotifications() const {
    return m_defaults.boolForKey(showsNotificationsKey);
}

TulLoudness Settings::loudness() const {
    const QString stored = m_defaults.stringForKey(loudnessKey);
    if (stored == trackLoudness) return TulLoudness::track;
    return stored == albumLoudness ? TulLoudness::album : TulLoudness::off;
}

QString Settings::sharingName() const {
    return m_defaults.stringForKey(sharingNameKey);
}

int Settings::sharingPort() const {
    return std::clamp(m_defaults.integerForKey(sharingPortKey), minPort, maxPort);
}

int Settings::textSize() const {
    return std::clamp(m_defaults.integerForKey(textSizeKey), minTextSize, maxTextSize);
}

bool Settings::pausesWhenSinkIsRemoved() const {
    return m_defaults.boolForKey(pausesWhenSinkIsRemovedKey);
}

bool Settings::keepsAwake() const {
    return m_defaults.boolForKey(keepsAwakeKey);
}

void Settings::setRestoresSession(bool restores) {
    store(restoresSessionKey, restores);
}

void Settings::setShowsNotifications(bool shows) {
    store(showsNotificationsKey, shows);
}

void Settings::setLoudness(TulLoudness loudness) {
    const bool isTrack = loudness == TulLoudness::track;
    store(loudnessKey, isTrack ? trackLoudness : loudness == TulLoudness::album ? albumLoudness : noLoudness);
}

void Settings::setSharingName(const QString& name) {
    store(sharingNameKey, name);
}

void Settings::setSharingPort(int port) {
    store(sharingPortKey, port);
}

void Settings::setTextSize(int percent) {
    store(textSizeKey, percent);
}

void Settings::setPausesWhenSinkIsRemoved(bool pauses) {
    store(pausesWhenSinkIsRemovedKey, pauses);
}

void Settings::setKeepsAwake(bool keeps) {
    store(keepsAwakeKey, keeps);
}

void Settings::store(const QString& key, const QJsonValue& value) {
    if (!m_defaults.setObject(value, key)) emit cannotBeStored();
    emit changed();
}

} // namespace app
