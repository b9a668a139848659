#include "platform/cocoa/TableView.h"

#include "platform/cocoa/Accessibility.h"
#include "platform/cocoa/Scale.h"

#include <QAccessible>
#include <QContextMenuEvent>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QScrollBar>
#include <QToolTip>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>

namespace cocoa {
namespace {

constexpr double defaultRowHeight = 20;
/// Between a cell's frame and the next row.
constexpr double rowSpacing = 1;
/// Scrolled by one notch of the wheel, in points.
constexpr int wheelStep = 36;

} // namespace

double TableViewDelegate::heightOfRow(int /*row*/) {
    return defaultRowHeight;
}

TableView::TableView(QWidget* parent)
    : QAbstractScrollArea(parent), m_dataCell(std::make_unique<TextFieldCell>()) {
    installAccessibility();
    m_dataCell->setControlView(viewport());
    setFrameShape(QFrame::NoFrame);
    setFocusPolicy(Qt::StrongFocus);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    verticalScrollBar()->setSingleStep(scaledToInt(wheelStep));
    connect(&Scale::shared(), &Scale::changed, this, &TableView::rescale);
}

/// Keeps the first visible row in place.
void TableView::rescale() {
    const int first = rowAtPoint({0, 0});
    verticalScrollBar()->setSingleStep(scaledToInt(wheelStep));
    reloadData();
    if (first >= 0 && first < numberOfRows())
        verticalScrollBar()->setValue(qRound(m_tops[std::size_t(first)]));
}

TableView::~TableView() = default;

void TableView::setDataSource(TableViewDataSource* source) {
    m_dataSource = source;
    reloadData();
}

void TableView::setDelegate(TableViewDelegate* delegate) {
    m_delegate = delegate;
    reloadData();
}

void TableView::setDataCell(std::unique_ptr<TextFieldCell> cell) {
    if (cell == nullptr) return;
    m_dataCell = std::move(cell);
    m_dataCell->setControlView(viewport());
    viewport()->update();
}

void TableView::reloadData() {
    layOutRows();
    const int last = numberOfRows() - 1;
    m_currentRow = std::min(m_currentRow, last);
    m_anchorRow = std::min(m_anchorRow, last);
    if (isRowHidden(m_currentRow)) m_currentRow = -1;
    if (isRowHidden(m_anchorRow)) m_anchorRow = -1;
    IndexSet kept = m_selected;
    std::erase_if(kept, [this](int row) { return isRowHidden(row); });
    changeSelection(std::move(kept));
    viewport()->update();
}

void TableView::layOutRows() {
    const int rows = m_dataSource == nullptr ? 0 : std::max(0, m_dataSource->numberOfRowsInTableView());
    m_tops.resize(std::size_t(rows) + 1);
    m_tops[0] = 0;
    for (int row = 0; row < rows; ++row)
        m_tops[std::size_t(row) + 1] = m_tops[std::size_t(row)] + heightOf(row);
    m_heightsChanged = false;
    updateScrollBar();
    updatePlaceholder();
}

double TableView::heightOf(int row) const {
    const double height = m_delegate == nullptr ? defaultRowHeight : m_delegate->heightOfRow(row);
    if (height == 0) return 0;
    // Whole points of the screen, so that rows meet without a seam.
    return std::round(scaled(std::max(rowSpacing, height)));
}

void TableView::updateScrollBar() {
    const int page = viewport()->height();
    verticalScrollBar()->setPageStep(page);
    verticalScrollBar()->setRange(0, std::max(0, int(std::ceil(m_tops.back())) - page));
}

void TableView::reloadIfRowCountChanged() {
    // The data source may have changed without a reload: do not request rows that no longer exist.
    const int rows = m_dataSource == nullptr ? 0 : m_dataSource->numberOfRowsInTableView();
    if (rows != numberOfRows()) reloadData();
}

void TableView::noteHeightOfRowsWithIndexesChanged(const IndexSet& rows) {
    if (m_delegate == nullptr) return;
    for (const int row : rows) {
        if (row < 0 || row >= numberOfRows()) continue;
        if (heightOf(row) != m_tops[std::size_t(row) + 1] - m_tops[std::size_t(row)]) m_heightsChanged = true;
    }
    if (m_heightsChanged && !m_drawing) reloadData();
}

QRectF TableView::rectOfRow(int row) const {
    if (row < 0 || row >= numberOfRows()) return {};
    const double top = m_tops[std::size_t(row)];
    const double height = m_tops[std::size_t(row) + 1] - top;
    return {0, top - verticalScrollBar()->value(), double(viewport()->width()), height};
}

QRectF TableView::cellFrameOfRow(int row) const {
    return designRect(rectOfRow(row)).adjusted(0, 0, 0, -rowSpacing);
}

int TableView::rowAtPoint(const QPointF& point) const {
    const double y = point.y() + verticalScrollBar()->value();
    if (y < 0 || y >= m_tops.back()) return -1;
    return int(std::upper_bound(m_tops.begin(), m_tops.end(), y) - m_tops.begin()) - 1;
}

void TableView::scrollRowToVisible(int row) {
    if (isRowHidden(row)) return;
    const double top = m_tops[std::size_t(row)];
    const double bottom = m_tops[std::size_t(row) + 1];
    const int shownTop = verticalScrollBar()->value();
    const int page = viewport()->height();
    if (top < shownTop || bottom - top > page) {
        verticalScrollBar()->setValue(int(std::floor(top)));
    } else if (bottom > shownTop + page) {
        verticalScrollBar()->setValue(int(std::ceil(bottom)) - page);
    }
}

void TableView::selectRowIndexes(IndexSet rows) {
    std::erase_if(rows, [this](int row) { return isRowHidden(row); });
    if (!m_allowsMultipleSelection && rows.size() > 1) rows.erase(std::next(rows.begin()), rows.end());
    if (!rows.empty()) m_currentRow = m_anchorRow = *rows.begin();
    changeSelection(std::move(rows));
}

void TableView::changeSelection(IndexSet rows) {
    if (rows == m_selected) return;
    m_selected = std::move(rows);
    viewport()->update();
    QAccessibleEvent changed(this, QAccessible::SelectionWithin);
    QAccessible::updateAccessibility(&changed);
    if (m_selectionDidChange) m_selectionDidChange();
}

TextFieldCell& TableView::preparedCell(int row) {
    if (m_dataSource != nullptr) m_dataCell->setObjectValue(m_dataSource->objectValueForTableColumn(row));
    if (m_delegate != nullptr) m_delegate->willDisplayCell(*m_dataCell, row);
    return *m_dataCell;
}

void TableView::drawRow(QPainter& painter, int row) {
    const QRectF frame = cellFrameOfRow(row);
    painter.save();
    preparedCell(row).drawInteriorWithFrame(painter, frame);
    painter.restore();
    if (row != m_currentRow || !m_showsFocus || !hasFocus()) return;
    painter.setPen(QPen(palette().color(QPalette::Highlight), 1, Qt::DotLine));
    painter.setBrush(Qt::NoBrush);
    painter.drawRect(frame.adjusted(1.5, 1.5, -1.5, -1.5));
}

void TableView::paintEvent(QPaintEvent* event) {
    reloadIfRowCountChanged();
    QPainter painter(viewport());
    painter.setRenderHint(QPainter::Antialiasing);
    painter.scale(scaled(1), scaled(1));
    m_drawing = true;
    // One row more than is touched: a cell may draw its separator into the next one's first pixels.
    const QRectF dirty = event->rect();
    const int touched = rowAtPoint({0, std::max(dirty.top(), double(-verticalScrollBar()->value()))});
    const int above = touched < 0 ? -1 : rowBefore(touched);
    for (int row = above < 0 ? rowAfter(-1) : above;
         row < numberOfRows() && rectOfRow(row).top() < dirty.bottom(); row = rowAfter(row))
        drawRow(painter, row);
    painter.resetTransform();
    m_drawing = false;
    drawDropIndicator(painter);
    if (m_heightsChanged) reloadData();
}

bool TableView::viewportEvent(QEvent* event) {
    if (event->type() != QEvent::ToolTip || m_delegate == nullptr)
        return QAbstractScrollArea::viewportEvent(event);
    const auto* help = static_cast<QHelpEvent*>(event);
    const int row = rowAtPoint(help->pos());
    const QString text = row < 0 ? QString() : m_delegate->toolTipForCell(row);
    // QToolTip guesses whether a text is rich: make it explicit.
    const QString escaped = text.toHtmlEscaped().replace(u'\n', QLatin1String("<br>"));
    const QString shown = text.isEmpty() ? text : QStringLiteral("<qt>%1</qt>").arg(escaped);
    QToolTip::showText(help->globalPos(), shown, viewport(), rectOfRow(row).toAlignedRect());
    return true;
}

void TableView::resizeEvent(QResizeEvent* event) {
    QAbstractScrollArea::resizeEvent(event);
    updateScrollBar();
    updatePlaceholder();
}

void TableView::scrollContentsBy(int /*dx*/, int dy) {
    viewport()->scroll(0, dy);
}

void TableView::click(int row, Qt::KeyboardModifiers modifiers) {
    const bool extend = (modifiers & Qt::ShiftModifier) && m_allowsMultipleSelection;
    const bool toggle = (modifiers & Qt::ControlModifier) && m_allowsMultipleSelection;
    if (row < 0) {
        if (!extend && !toggle) changeSelection({});
        return;
    }
    IndexSet rows;
    if (extend && m_anchorRow >= 0) {
        const auto [from, to] = std::minmax(m_anchorRow, row);
        for (int each = rowAfter(from - 1); each <= to; each = rowAfter(each))
            rows.insert(rows.end(), each);
    } else if (toggle) {
        rows = m_selected;
        if (!rows.insert(row).second) rows.erase(row);
        m_anchorRow = row;
    } else {
        rows = {row};
        m_anchorRow = row;
    }
    m_currentRow = row;
    changeSelection(std::move(rows));
    viewport()->update();
}

void TableView::moveCurrentRow(int row, Qt::KeyboardModifiers modifiers) {
    if (row < 0) return;
    m_showsFocus = true;
    click(row, modifiers & Qt::ShiftModifier);
    scrollRowToVisible(m_currentRow);
    QAccessibleEvent focused(this, QAccessible::Focus);
    focused.setChild(m_currentRow);
    QAccessible::updateAccessibility(&focused);
}

void TableView::performDoubleAction(int row) {
    m_clickedRow = row;
    if (m_doubleAction) m_doubleAction();
    viewport()->update(); // the action may have changed what the rows show
}

void TableView::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton) return event->ignore();
    m_showsFocus = false;
    const int row = rowAtPoint(event->position());
    m_clickedRow = row;
    m_pressedAt.reset();
    if (row >= 0) m_pressedAt = event->position();
    // A press on one of several selected rows may start dragging all of them: select on release.
    const bool plain = !(event->modifiers() & (Qt::ShiftModifier | Qt::ControlModifier));
    if (plain && m_selected.size() > 1 && m_selected.contains(row)) return;
    click(row, event->modifiers());
}

void TableView::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton || !m_pressedAt) return;
    m_pressedAt.reset();
    const int row = rowAtPoint(event->position());
    const bool plain = !(event->modifiers() & (Qt::ShiftModifier | Qt::ControlModifier));
    if (plain && row >= 0 && m_selected.size() > 1) click(row, event->modifiers());
}

void TableView::mouseDoubleClickEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton) return event->ignore();
    m_pressedAt.reset();
    performDoubleAction(rowAtPoint(event->position()));
}

void TableView::keyPressEvent(QKeyEvent* event) {
    const double height = std::max(1.0, rectOfRow(rowAfter(-1)).height());
    const int page = std::max(1, int(viewport()->height() / height) - 1);
    const Qt::KeyboardModifiers modifiers = event->modifiers();
    if (event->matches(QKeySequence::SelectAll) && m_allowsMultipleSelection &&
        rowAfter(-1) < numberOfRows()) {
        m_anchorRow = rowAfter(-1);
        return click(rowBefore(numberOfRows()), Qt::ShiftModifier);
    }
    if (modifiers & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier)) return event->ignore();
    switch (event->key()) {
    case Qt::Key_Up:
        return moveCurrentRow(rowAway(m_currentRow, -1), modifiers);
    case Qt::Key_Down:
        return moveCurrentRow(rowAway(m_currentRow, 1), modifiers);
    case Qt::Key_PageUp:
        return moveCurrentRow(rowAway(m_currentRow, -page), modifiers);
    case Qt::Key_PageDown:
        return moveCurrentRow(rowAway(m_currentRow, page), modifiers);
    case Qt::Key_Home:
        return moveCurrentRow(rowAway(-1, 1), modifiers);
    case Qt::Key_End:
        return moveCurrentRow(rowAway(numberOfRows(), -1), modifiers);
    case Qt::Key_Return:
    case Qt::Key_Enter:
        if (m_currentRow >= 0) return performDoubleAction(m_currentRow);
        [[fallthrough]];
    default:
        event->ignore();
    }
}

void TableView::contextMenuEvent(QContextMenuEvent* event) {
    const bool byKey = event->reason() == QContextMenuEvent::Keyboard;
    const int row = byKey ? m_currentRow : rowAtPoint(event->pos());
    if (row < 0 || row >= numberOfRows() || !m_menuAction) return event->ignore();
    if (byKey) scrollRowToVisible(row);
    if (!m_selected.contains(row)) click(row, Qt::NoModifier);
    m_currentRow = m_clickedRow = row;
    m_menuAction(byKey ? viewport()->mapToGlobal(rectOfRow(row).center().toPoint()) : event->globalPos());
}

void TableView::wheelEvent(QWheelEvent* event) {
    // Horizontal scrolling turns pages.
    const QPoint angle = event->angleDelta();
    if (std::abs(angle.x()) > std::abs(angle.y())) return event->ignore();
    QAbstractScrollArea::wheelEvent(event);
}

void TableView::focusInEvent(QFocusEvent* event) {
    if (event->reason() == Qt::TabFocusReason || event->reason() == Qt::BacktabFocusReason) {
        m_showsFocus = true;
        if (m_currentRow < 0) m_currentRow = m_anchorRow = rowAway(-1, 1);
    }
    viewport()->update();
    QAbstractScrollArea::focusInEvent(event);
}

void TableView::focusOutEvent(QFocusEvent* event) {
    viewport()->update();
    QAbstractScrollArea::focusOutEvent(event);
}

} // namespace cocoa
