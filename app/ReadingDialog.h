#pragma once

#include "platform/cocoa/RunLoop.h"

#include <QElapsedTimer>

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>

class QProgressDialog;
class QWidget;
class TulPlayer;

namespace app {

/// Keeps the window alive while many files are read: after half a second it shows how many of them have been,
/// with a button to stop there. One object is one reading.
///
/// Threads: main thread only.
class ReadingDialog {
public:
    /// Calls `read`, and shows how far the player has come with what it reads meanwhile.
    static void whileShown(TulPlayer& player, QWidget& window, const std::function<void()>& read);

    explicit ReadingDialog(QWidget& window);
    ~ReadingDialog();

    /// To be called again and again while reading; false when the user wants to stop. A total of 0 is not
    /// known yet.
    bool proceed(std::size_t done, std::size_t total);

private:
    void show(std::size_t total);

    QWidget& m_window;
    QElapsedTimer m_running;
    qint64 m_nextMs; ///< When the dialog is looked after next.
    std::unique_ptr<QProgressDialog> m_dialog;
    std::optional<cocoa::RunLoop::Mode> m_modal;
};

} // namespace app
