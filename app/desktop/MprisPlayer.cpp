#include "app/desktop/MprisPlayer.h"

#include "app/DisplayText.h"
#include "app/FenAppDelegate.h"
#include "app/FileTypes.h"
#include "app/desktop/MprisRoot.h"
#include "core/player/TulPlayer.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDir>
#include <QMetaProperty>
#include <QUrl>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdlib>
#include <utility>

namespace app {
namespace {

using namespace std::chrono_literals;

/// A position further than this from where playing would have brought it has been jumped to. Between two
/// looks playing may have stopped or begun.
constexpr std::chrono::microseconds jump = 750ms;

constexpr double microsecondsPerSecond = 1e6;

struct LoopStatus {
    QLatin1String name;
    TulRepeat repeat;
};
constexpr std::array<LoopStatus, 3> loopStatuses{{{QLatin1String("None"), TulRepeat::off},
                                                  {QLatin1String("Playlist"), TulRepeat::list},
                                                  {QLatin1String("Track"), TulRepeat::track}}};

qlonglong toMicroseconds(double seconds) {
    return static_cast<qlonglong>(std::max(seconds, 0.0) * microsecondsPerSecond);
}

/// Where the session's end takes what a killed program has left.
QString coverTemplate() {
    return qEnvironmentVariable("XDG_RUNTIME_DIR", QDir::tempPath()) +
           QStringLiteral("/tulplayer-cover-XXXXXX");
}

} // namespace

const QString MprisPlayer::path = QStringLiteral("/org/mpris/MediaPlayer2");

MprisPlayer::MprisPlayer(QObject& service, FenAppDelegate& delegate)
    : QDBusAbstractAdaptor(&service), m_delegate(delegate) {
    m_since.start();
}

// ---- what is told ----

void MprisPlayer::announceChanges() {
    const bool sameTrack = handle() == m_handle;
    if (!sameTrack) m_cover.reset();
    if (!m_cover) takeCover(); // it may come later than the sound

    const qlonglong played = m_advanced ? m_since.nsecsElapsed() / 1000 : 0;
    const qlonglong strayed = position() - m_position - played;
    noteTime();

    const QVariantMap now = properties();
    QVariantMap changed;
    for (auto property = now.begin(); property != now.end(); ++property)
        if (m_told.value(property.key()) != property.value())
            changed.insert(property.key(), property.value());
    m_told = now;
    if (!changed.isEmpty()) {
        QDBusMessage signal = QDBusMessage::createSignal(
            path, QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("PropertiesChanged"));
        signal << QStringLiteral("org.mpris.MediaPlayer2.Player") << changed << QStringList();
        QDBusConnection::sessionBus().send(signal);
    }
    if (sameTrack && std::abs(strayed) > jump.count()) Q_EMIT Seeked(m_position);
}

/// All but the position, which is never announced.
QVariantMap MprisPlayer::properties() const {
    QVariantMap values;
    for (int i = staticMetaObject.propertyOffset(); i < staticMetaObject.propertyCount(); ++i) {
        const QMetaProperty property = staticMetaObject.property(i);
        if (QLatin1String(property.name()) == QLatin1String("Position")) continue;
        values.insert(QString::fromLatin1(property.name()), property.read(this));
    }
    return values;
}

void MprisPlayer::noteTime() {
    m_handle = handle();
    m_position = position();
    m_advanced = player().playbackState() == TulPlaybackState::playing;
    m_since.restart();
}

/// The picture of the entry that plays. It is kept as long as its address is announced.
void MprisPlayer::takeCover() {
    const TulPlaylistEntry* const playing = player().playingEntry();
    if (handle() == 0 || !playing || playing->coverArtSize == 0) return;
    auto file = std::make_unique<QTemporaryFile>(coverTemplate());
    if (!file->open() || file->write(playing->coverArt.get(), playing->coverArtSize) != playing->coverArtSize)
        return;
    file->close();
    m_cover = std::move(file);
}

TulPlayer& MprisPlayer::player() const {
    return *m_delegate.player;
}

std::uint32_t MprisPlayer::handle() const {
    return player().stream ? player().stream->handle : 0;
}

/// Every start of an entry is a track of its own.
QDBusObjectPath MprisPlayer::trackId() const {
    if (handle() == 0) return QDBusObjectPath(QStringLiteral("/org/mpris/MediaPlayer2/TrackList/NoTrack"));
    return QDBusObjectPath(QStringLiteral("/tulplayer/track/%1").arg(handle()));
}

QString MprisPlayer::playbackStatus() const {
    const TulPlaybackState state = player().playbackState();
    if (isStarted(state)) return QStringLiteral("Playing");
    const bool pauses =
        state == TulPlaybackState::fadingOut && player().request() == TulPlaybackRequest::pause;
    return pauses || state == TulPlaybackState::paused ? QStringLiteral("Paused") : QStringLiteral("Stopped");
}

QVariantMap MprisPlayer::metadata() const {
    QVariantMap data{{QStringLiteral("mpris:trackid"), QVariant::fromValue(trackId())}};
    if (!player().stream) return data;
    const TulStream& stream = *player().stream;
    const auto insert = [&data](const QString& key, const std::string& bytes, auto made) {
        const auto text = displayText(bytes);
        if (text && !text->isEmpty()) data.insert(key, made(*text));
    };
    const auto alone = [](const QString& text) { return text; };
    insert(QStringLiteral("xesam:title"), stream.title, alone);
    insert(QStringLiteral("xesam:artist"), stream.artist,
           [](const QString& text) { return QStringList(text); });
    insert(QStringLiteral("xesam:album"), stream.album, alone);
    if (stream.length() > 0) data.insert(QStringLiteral("mpris:length"), toMicroseconds(stream.length()));
    if (m_cover)
        data.insert(QStringLiteral("mpris:artUrl"),
                    QUrl::fromLocalFile(m_cover->fileName()).toString(QUrl::FullyEncoded));
    return data;
}

QString MprisPlayer::loopStatus() const {
    const auto found = std::ranges::find(loopStatuses, player().repeat(), &LoopStatus::repeat);
    return QString::fromLatin1(found->name);
}

bool MprisPlayer::isShuffled() const {
    return player().isShuffled();
}

double MprisPlayer::volume() const {
    return player().volume;
}

qlonglong MprisPlayer::position() const {
    return player().stream ? toMicroseconds(player().stream->position()) : 0;
}

bool MprisPlayer::hasEntries() const {
    return player().playlist->entryCount() > 0;
}

bool MprisPlayer::canPlay() const {
    return hasEntries() || handle() != 0;
}

bool MprisPlayer::canPause() const {
    return handle() != 0;
}

bool MprisPlayer::canSeek() const {
    return player().stream && player().stream->length() > 0;
}

// ---- what is asked ----

void MprisPlayer::Next() {
    m_delegate.playerController->next();
    announceChanges();
}

void MprisPlayer::Previous() {
    m_delegate.playerController->previous();
    announceChanges();
}

void MprisPlayer::Pause() {
    if (isStarted(player().playbackState())) PlayPause();
}

void MprisPlayer::Play() {
    if (!isStarted(player().playbackState())) PlayPause();
}

void MprisPlayer::PlayPause() {
    m_delegate.playerController->playPause();
    announceChanges();
}

void MprisPlayer::Stop() {
    m_delegate.playerController->stop();
    announceChanges();
}

void MprisPlayer::Seek(qlonglong offset) {
    if (!canSeek()) return;
    const qlonglong here = position();
    if (offset > toMicroseconds(player().stream->length()) - here) return Next();
    moveTo(std::max<qlonglong>(here + offset, 0));
}

void MprisPlayer::SetPosition(const QDBusObjectPath& track, qlonglong position) {
    if (!canSeek() || track != trackId()) return;
    if (position >= 0 && position <= toMicroseconds(player().stream->length())) moveTo(position);
}

void MprisPlayer::moveTo(qlonglong position) {
    m_delegate.playerController->seekTo(static_cast<double>(position) / microsecondsPerSecond);
    noteTime();
    Q_EMIT Seeked(m_position);
}

void MprisPlayer::setVolume(double volume) {
    m_delegate.playerController->setVolume(volume);
    announceChanges();
}

void MprisPlayer::setLoopStatus(const QString& status) {
    const auto found =
        std::ranges::find_if(loopStatuses, [&](const LoopStatus& known) { return known.name == status; });
    if (found == loopStatuses.end()) return;
    player().setRepeat(found->repeat);
    announceChanges();
}

void MprisPlayer::setShuffled(bool shuffled) {
    player().setShuffled(shuffled);
    announceChanges();
}

void MprisPlayer::OpenUri(const QString& uri) {
    const QUrl url(uri);
    const bool leadsSomewhere = url.isLocalFile() ? url.path().size() > 1 : !url.host().isEmpty();
    if (!leadsSomewhere || !MprisRoot::uriSchemes().contains(url.scheme())) return;
    m_waiting.push_back(sourceFromAddress(url.toEncoded().toStdString()));
    openWaiting();
}

void MprisPlayer::openWaiting() {
    if (m_waiting.empty() || !FenAppDelegate::takesCommands()) return;
    // Reading may take long and show its progress: whoever asked is not to wait for that.
    const auto open = [this] {
        if (FenAppDelegate::takesCommands()) m_delegate.openSources(std::exchange(m_waiting, {}));
    };
    QMetaObject::invokeMethod(this, open, Qt::QueuedConnection);
}

} // namespace app
