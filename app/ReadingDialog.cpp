#include "app/ReadingDialog.h"

#include "core/player/TulPlayer.h"

#include <QApplication>
#include <QProgressDialog>

namespace app {
namespace {

constexpr qint64 quietMs = 500;
constexpr qint64 handlesEventsMs = 50;

} // namespace

void ReadingDialog::whileShown(TulPlayer& player, QWidget& window, const std::function<void()>& read) {
    ReadingDialog dialog(window);
    player.readingProgress = [&dialog](std::size_t done, std::size_t total) {
        return dialog.proceed(done, total);
    };
    read();
    player.readingProgress = nullptr;
}

ReadingDialog::ReadingDialog(QWidget& window) : m_window(window), m_nextMs(quietMs) {
    m_running.start();
}

ReadingDialog::~ReadingDialog() = default;

bool ReadingDialog::proceed(std::size_t done, std::size_t total) {
    if (m_running.elapsed() < m_nextMs) return true;
    m_nextMs = m_running.elapsed() + handlesEventsMs;
    if (!m_dialog) show(total);
    // The files at hand are still being read, and the dialog is gone: nothing else would keep the user from
    // changing the list under them.
    if (m_dialog->wasCanceled()) return false;
    m_dialog->setLabelText(total == 0 ? QStringLiteral("%1 files found").arg(done)
                                      : QStringLiteral("%1 of %2 files").arg(done).arg(total));
    m_dialog->setValue(static_cast<int>(done));
    QApplication::processEvents();
    return !m_dialog->wasCanceled();
}

void ReadingDialog::show(std::size_t total) {
    m_modal.emplace();
    // At the program's start the window does not know yet where it stands.
    QApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
    m_dialog = std::make_unique<QProgressDialog>(QString(), QStringLiteral("Cancel"), 0,
                                                 static_cast<int>(total), &m_window);
    m_dialog->setWindowTitle(QStringLiteral("Reading tags"));
    m_dialog->setWindowModality(Qt::ApplicationModal);
    m_dialog->setMinimumDuration(0);
    m_dialog->setAutoClose(false);
    m_dialog->setAutoReset(false);
    m_dialog->show();
}

} // namespace app
