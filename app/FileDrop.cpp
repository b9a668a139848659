#include "app/FileDrop.h"

#include "app/FenAppDelegate.h"
#include "app/FileTypes.h"

#include <QDropEvent>
#include <QMimeData>
#include <QUrl>
#include <QWidget>

#include <utility>

namespace app {
FileDrop::FileDrop(QWidget& window, std::function<void(const Sources&)> take) : m_take(std::move(take)) {
    window.setAcceptDrops(true);
    window.installEventFilter(this);
}

bool FileDrop::eventFilter(QObject* watched, QEvent* event) {
    switch (event->type()) {
    case QEvent::DragEnter:
    case QEvent::DragMove:
    case QEvent::Drop:
        drop(static_cast<QDropEvent&>(*event));
        return true;
    default:
        return QObject::eventFilter(watched, event);
    }
}

void FileDrop::drop(QDropEvent& event) {
    const QList<QUrl> urls = event.mimeData()->urls();
    if (urls.isEmpty() || !FenAppDelegate::takesCommands()) return event.ignore();
    event.setDropAction(Qt::CopyAction);
    event.accept();
    if (event.type() != QEvent::Drop) return;
    Sources sources;
    for (const QUrl& url : urls)
        sources.push_back(sourceFromAddress(url.toEncoded().toStdString()));
    QMetaObject::invokeMethod(
        this, [this, sources] { m_take(sources); }, Qt::QueuedConnection);
}

} // namespace app
