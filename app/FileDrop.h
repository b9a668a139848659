#pragma once

#include <QObject>
#include <QWidget>

class FenPlaylistController;
class QDropEvent;

namespace app {

class SourceQueue;

/// Adds what other programs' files and addresses are dropped on a window: between the rows of the playlist,
/// or else at its end. The window is framed while it would take what is dragged over it.
///
/// Threads: main thread only.
class FileDrop : public QObject {
public:
    /// The other program is let go before anything is added. Nothing is taken while a dialog waits for an
    /// answer.
    FileDrop(QWidget& window, FenPlaylistController& page, SourceQueue& sources);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    /// Lies over the window; input goes through it.
    class Frame : public QWidget {
    public:
        explicit Frame(QWidget& window);

    protected:
        void paintEvent(QPaintEvent* event) override;
    };

    void drag(QDropEvent& event);
    void drop(const QDropEvent& event);
    void endDrag();

    QWidget& m_window;
    FenPlaylistController& m_page;
    SourceQueue& m_sources;
    Frame* m_frame; ///< The window's.
};

} // namespace app
