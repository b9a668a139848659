#pragma once

#include <QObject>
#include <QWidget>

class FenPlaylistController;
class QDropEvent;

namespace app {

class SourceQueue;

/// Adds files and addresses of other programs that are dropped on a window: between the rows of the playlist,
/// or at its end. Frames the window while it accepts a drag.
///
/// Threads: main thread only.
class FileDrop : public QObject {
public:
    /// Adds after the drop event has returned, so that the other program does not wait. Accepts nothing while
    /// a dialog is open.
    FileDrop(QWidget& window, FenPlaylistController& page, SourceQueue& sources);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    /// An overlay that is transparent for input.
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
