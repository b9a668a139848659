// The table's drag and drop of rows.
#include "platform/cocoa/RunLoop.h"
#include "platform/cocoa/Scale.h"
#include "platform/cocoa/TableView.h"

#include <QApplication>
#include <QDrag>
#include <QDragMoveEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QPointer>
#include <QScrollBar>

#include <algorithm>

namespace cocoa {
namespace {

/// This near to the viewport's upper or lower edge, in points, a drag scrolls.
constexpr double autoscrollMargin = 28;
constexpr int autoscrollIntervalMs = 16;
/// The radius of the dot on an insertion line.
constexpr double insertionDot = 4;
/// Of the number on several dragged rows.
constexpr double badgeHeight = 20;

} // namespace

QVariant TableViewDataSource::objectValueForTableColumn(int /*row*/) {
    return {};
}

bool TableViewDataSource::writeRowsWithIndexes(const IndexSet& /*rows*/, Pasteboard& /*pasteboard*/) {
    return false;
}

DragOperation TableViewDataSource::validateDrop(const Pasteboard& /*pasteboard*/, int /*proposedRow*/,
                                                DropOperation /*operation*/) {
    return DragOperation::none;
}

bool TableViewDataSource::acceptDrop(const Pasteboard& /*pasteboard*/, int /*row*/,
                                     DropOperation /*operation*/) {
    return false;
}

void TableView::registerForDraggedTypes(const QStringList& types) {
    m_draggedTypes = types;
    setAcceptDrops(!types.isEmpty());
    viewport()->setAcceptDrops(!types.isEmpty());
}

void TableView::mouseMoveEvent(QMouseEvent* event) {
    if (!m_pressedAt || !(event->buttons() & Qt::LeftButton)) return;
    const double distance = (event->position() - *m_pressedAt).manhattanLength();
    if (distance < QApplication::startDragDistance()) return;
    const int row = rowAtPoint(*m_pressedAt);
    m_pressedAt.reset();
    if (row >= 0) startDrag(row);
}

void TableView::startDrag(int row) {
    const IndexSet rows = m_selected.contains(row) ? m_selected : IndexSet{row};
    Pasteboard pasteboard;
    if (m_dataSource == nullptr || !m_dataSource->writeRowsWithIndexes(rows, pasteboard)) return;

    // The toolkit deletes a drag by itself when it is over.
    const QPointer<QDrag> drag = std::make_unique<QDrag>(this).release();
    drag->setMimeData(pasteboard.mimeData().release()); // the drag's from here on
    drag->setPixmap(pictureOfRows(rows));
    drag->setHotSpot(viewport()->mapFromGlobal(QCursor::pos()) - rectOfRow(row).topLeft().toPoint());
    m_draggedRow = *rows.begin();
    const RunLoop::Mode tracking;
    const QPointer<TableView> self = this;
    // Copy only: after a move another program might delete the files.
    drag->exec(Qt::CopyAction);
    if (self) m_draggedRow = -1;
}

/// The first row, with a badge for the number of rows.
QPixmap TableView::pictureOfRows(const IndexSet& rows) {
    const int shown = *rows.begin();
    const QRectF frame = rectOfRow(shown);
    QPixmap picture((frame.size() * devicePixelRatioF()).toSize());
    picture.setDevicePixelRatio(devicePixelRatioF());
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    painter.setOpacity(0.7);
    painter.scale(scaled(1), scaled(1));
    preparedCell(shown).drawInteriorWithFrame(painter, QRectF(QPointF(), cellFrameOfRow(shown).size()));
    painter.resetTransform();
    if (rows.size() == 1) return picture;
    painter.setOpacity(1);
    painter.setRenderHint(QPainter::Antialiasing);
    const QString count = QString::number(rows.size());
    const double width = badgeHeight + painter.fontMetrics().horizontalAdvance(count);
    const QRectF badge((frame.width() - width) / 2, (frame.height() - badgeHeight) / 2, width, badgeHeight);
    painter.setPen(Qt::NoPen);
    painter.setBrush(palette().color(QPalette::Highlight));
    painter.drawRoundedRect(badge, badgeHeight / 2, badgeHeight / 2);
    painter.setPen(palette().color(QPalette::HighlightedText));
    painter.drawText(badge, Qt::AlignCenter, count);
    return picture;
}

TableView::Drop TableView::dropAt(const QPointF& point) const {
    const int row = rowAtPoint(point);
    if (row >= 0) return {row, DropOperation::on};
    const bool below = point.y() + verticalScrollBar()->value() >= m_tops.back();
    return {below ? numberOfRows() : 0, DropOperation::above};
}

std::optional<int> TableView::insertionRowAt(const QPointF& point) const {
    const int row = rowAtPoint(point);
    if (row < 0) return std::nullopt;
    return point.y() < rectOfRow(row).center().y() ? row : row + 1;
}

std::optional<TableView::Drop> TableView::insertionAt(const QPointF& point) const {
    const std::optional<int> row = insertionRowAt(point);
    return row ? std::optional(Drop{*row, DropOperation::above}) : std::nullopt;
}

void TableView::setInsertionPoint(std::optional<QPointF> point) {
    m_showsInsertion = point.has_value();
    setDrop(point ? insertionAt(*point) : std::nullopt);
    if (!point) return m_autoscrollTimer.stop();
    m_dragPoint = *point;
    if (!m_autoscrollTimer.isActive()) m_autoscrollTimer.start(autoscrollIntervalMs, this);
}

void TableView::setDrop(std::optional<Drop> drop) {
    if (drop == m_drop) return;
    m_drop = drop;
    viewport()->update();
}

void TableView::proposeDrop(QDragMoveEvent* event) {
    m_dragPoint = event->position();
    const Pasteboard pasteboard(*event->mimeData(), m_draggedTypes);
    const Drop drop = dropAt(m_dragPoint);
    const bool wanted =
        m_dataSource != nullptr && !pasteboard.isEmpty() && event->source() != nullptr &&
        m_dataSource->validateDrop(pasteboard, drop.row, drop.operation) == DragOperation::move;
    setDrop(wanted ? std::optional(drop) : std::nullopt);
    if (!wanted) return event->ignore();
    event->accept();
}

void TableView::dragEnterEvent(QDragEnterEvent* event) {
    const Pasteboard pasteboard(*event->mimeData(), m_draggedTypes);
    // A drag of another instance has the same type, but its own row indexes.
    if (pasteboard.isEmpty() || event->source() == nullptr) return event->ignore();
    m_autoscrollTimer.start(autoscrollIntervalMs, this);
    event->accept(); // each move validates the drop
}

void TableView::dragMoveEvent(QDragMoveEvent* event) {
    proposeDrop(event);
}

void TableView::dragLeaveEvent(QDragLeaveEvent* /*event*/) {
    m_autoscrollTimer.stop();
    setDrop(std::nullopt);
}

void TableView::dropEvent(QDropEvent* event) {
    m_autoscrollTimer.stop();
    const std::optional<Drop> drop = m_drop;
    setDrop(std::nullopt);
    const Pasteboard pasteboard(*event->mimeData(), m_draggedTypes);
    if (!drop || m_dataSource == nullptr) return event->ignore();
    event->setAccepted(m_dataSource->acceptDrop(pasteboard, drop->row, drop->operation));
    viewport()->update();
}

void TableView::timerEvent(QTimerEvent* event) {
    if (event->timerId() != m_autoscrollTimer.timerId()) return QAbstractScrollArea::timerEvent(event);
    autoscroll();
}

void TableView::autoscroll() {
    const double above = autoscrollMargin - m_dragPoint.y();
    const double below = m_dragPoint.y() - (viewport()->height() - autoscrollMargin);
    const int before = verticalScrollBar()->value();
    if (above > 0) verticalScrollBar()->setValue(before - int(above / 2) - 1);
    if (below > 0) verticalScrollBar()->setValue(before + int(below / 2) + 1);
    // Scrolling moves the rows under the pointer.
    if (!m_drop || verticalScrollBar()->value() == before) return;
    setDrop(m_showsInsertion ? insertionAt(m_dragPoint) : dropAt(m_dragPoint));
}

void TableView::drawDropIndicator(QPainter& painter) const {
    if (!m_drop) return;
    painter.setPen(QPen(palette().color(QPalette::Highlight), 2));
    painter.setBrush(Qt::NoBrush);
    const QRectF onto = rectOfRow(m_drop->row);
    if (m_drop->operation == DropOperation::on && m_draggedRow < 0) {
        painter.drawRect(onto.adjusted(1, 1, -1, -1));
        return;
    }
    // A row of this table ends at the row that it is dropped on: below it when it comes from above.
    const bool lineBelow = m_drop->operation == DropOperation::on && m_draggedRow < m_drop->row;
    const double end = m_tops.back() - verticalScrollBar()->value();
    const double top = m_drop->row < numberOfRows() ? (lineBelow ? onto.bottom() : onto.top()) : end;
    const double y = std::clamp(top, 1.0, viewport()->height() - 1.0);
    painter.drawLine(QPointF(0, y), QPointF(viewport()->width(), y));
    if (!m_showsInsertion) return;
    // Among rows with separators a line alone is easily overlooked.
    painter.setBrush(palette().color(QPalette::HighlightedText));
    painter.drawEllipse(QPointF(insertionDot * 2, y), insertionDot, insertionDot);
}

} // namespace cocoa
