#include "app/FileDrop.h"

#include "app/FenAppDelegate.h"
#include "app/FenPlaylistController.h"
#include "app/FileTypes.h"
#include "app/SourceQueue.h"
#include "controls/Colours.h"

#include <QDropEvent>
#include <QMimeData>
#include <QPainter>
#include <QUrl>

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace app {
namespace {

constexpr double frameWidth = 2;
constexpr double frameRadius = 9; // the window's

} // namespace

FileDrop::FileDrop(QWidget& window, FenPlaylistController& page, SourceQueue& sources)
    : m_window(window), m_page(page), m_sources(sources), m_frame(std::make_unique<Frame>(window).release()) {
    window.setAcceptDrops(true);
    window.installEventFilter(this);
}

bool FileDrop::eventFilter(QObject* watched, QEvent* event) {
    switch (event->type()) {
    case QEvent::DragEnter:
    case QEvent::DragMove:
    case QEvent::Drop:
        drag(static_cast<QDropEvent&>(*event));
        return true;
    case QEvent::DragLeave:
        endDrag();
        return true;
    default:
        return QObject::eventFilter(watched, event);
    }
}

void FileDrop::drag(QDropEvent& event) {
    // Rows of the playlist carry URLs, too, for other programs.
    const bool isOurs = event.source() != nullptr;
    if (isOurs || event.mimeData()->urls().isEmpty() || !FenAppDelegate::takesCommands()) {
        endDrag();
        return event.ignore();
    }
    event.setDropAction(Qt::CopyAction);
    event.accept();
    if (event.type() == QEvent::Drop) return drop(event);
    m_page.showDropPlace(m_window.mapToGlobal(event.position()));
    m_frame->setGeometry(m_window.rect());
    m_frame->raise();
    m_frame->show();
}

void FileDrop::drop(const QDropEvent& event) {
    endDrag();
    std::vector<std::string> sources;
    for (const QUrl& url : event.mimeData()->urls())
        sources.push_back(sourceFromAddress(url.toEncoded().toStdString()));
    const std::uint64_t before = m_page.entryAtDropPlace(m_window.mapToGlobal(event.position()));
    QMetaObject::invokeMethod(
        this, [this, sources, before] { m_sources.drop(sources, before); }, Qt::QueuedConnection);
}

void FileDrop::endDrag() {
    m_page.showDropPlace(std::nullopt);
    m_frame->hide();
}

FileDrop::Frame::Frame(QWidget& window) : QWidget(&window) {
    setAttribute(Qt::WA_TransparentForMouseEvents);
    hide();
}

void FileDrop::Frame::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(colours::blue(), frameWidth));
    const double inset = frameWidth / 2;
    painter.drawRoundedRect(QRectF(rect()).adjusted(inset, inset, -inset, -inset), frameRadius, frameRadius);
}

} // namespace app
