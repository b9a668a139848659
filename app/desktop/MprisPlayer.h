#pragma once

#include <QDBusAbstractAdaptor>
#include <QElapsedTimer>
#include <QTemporaryFile>
#include <QVariantMap>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

class FenAppDelegate;
class QDBusObjectPath;
class TulPlayer;

namespace app {

/// What plays, on the bus, and the transport controls. Times are microseconds.
class MprisPlayer : public QDBusAbstractAdaptor {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.mpris.MediaPlayer2.Player")
    Q_PROPERTY(QString PlaybackStatus READ playbackStatus)
    Q_PROPERTY(QString LoopStatus READ loopStatus WRITE setLoopStatus)
    Q_PROPERTY(bool Shuffle READ isShuffled WRITE setShuffled)
    Q_PROPERTY(double Rate READ rate)
    Q_PROPERTY(double MinimumRate READ rate)
    Q_PROPERTY(double MaximumRate READ rate)
    Q_PROPERTY(QVariantMap Metadata READ metadata)
    Q_PROPERTY(double Volume READ volume WRITE setVolume)
    Q_PROPERTY(qlonglong Position READ position)
    Q_PROPERTY(bool CanGoNext READ hasEntries)
    Q_PROPERTY(bool CanGoPrevious READ hasEntries)
    Q_PROPERTY(bool CanPlay READ canPlay)
    Q_PROPERTY(bool CanPause READ canPause)
    Q_PROPERTY(bool CanSeek READ canSeek)
    Q_PROPERTY(bool CanControl READ canControl)
public:
    /// Where the object is on the bus.
    static const QString path;

    MprisPlayer(QObject& service, FenAppDelegate& delegate);

    /// Signals the properties that differ from what was told last, and a jump of the position.
    void announceChanges();
    /// Opens what has been asked for, as soon as nothing else is being worked on.
    void openWaiting();

    QString playbackStatus() const;
    QString loopStatus() const;
    /// What is no status changes nothing.
    void setLoopStatus(const QString& status);
    bool isShuffled() const;
    void setShuffled(bool shuffled);
    static double rate() { return 1.0; }
    QVariantMap metadata() const;
    double volume() const;
    /// Beyond silence and full it is held there.
    void setVolume(double volume);
    qlonglong position() const;
    bool hasEntries() const;
    bool canPlay() const;
    bool canPause() const;
    bool canSeek() const;
    static bool canControl() { return true; }

public Q_SLOTS: // what the bus may call
    void Next();
    void Previous();
    void Pause();
    void PlayPause();
    void Stop();
    void Play();
    /// Past the end it goes on to the next entry.
    void Seek(qlonglong offset);
    /// Only in the track that plays; a place outside it is ignored.
    void SetPosition(const QDBusObjectPath& track, qlonglong position);
    /// Appended; plays when nothing does.
    void OpenUri(const QString& uri);

Q_SIGNALS:
    void Seeked(qlonglong position);

private:
    TulPlayer& player() const;
    std::uint32_t handle() const;
    QDBusObjectPath trackId() const;
    QVariantMap properties() const;
    void moveTo(qlonglong position);
    void takeCover();
    void noteTime();

    FenAppDelegate& m_delegate;
    QVariantMap m_told;
    /// The current entry's picture, for programs that show it; null when it has none.
    std::unique_ptr<QTemporaryFile> m_cover;
    std::vector<std::string> m_waiting; ///< To be opened.
    std::uint32_t m_handle = 0;         ///< Of the stream that was told.
    qlonglong m_position = 0;           ///< When `m_since` began.
    bool m_advanced = false;            ///< The position moved by itself then.
    QElapsedTimer m_since;
};

} // namespace app
