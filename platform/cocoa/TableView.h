#pragma once

#include "platform/cocoa/TableViewDataSource.h"
#include "platform/cocoa/TableViewDelegate.h"

#include <QAbstractScrollArea>
#include <QBasicTimer>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace cocoa {

/// A table of one column whose rows are drawn by one data cell. Only visible rows are requested from the data
/// source, when they are drawn. The table paints no selection of its own: the delegate shows it in the cell.
///
/// Heights and cells are in points of the design; everything else is in points of the screen.
///
/// A row of height h at y gives its cell the frame (0, y, width, h - 1): the last point is the space between
/// rows, where a cell may draw a separator below its frame. A row of height 0 is hidden: it keeps its index,
/// but is not drawn, keys pass over it, and it cannot be selected by the user.
///
/// Keys: arrows, page keys, Home and End move the selection (with Shift they extend it), Ctrl+A selects all,
/// Enter is the double action on the current row.
class TableView : public QAbstractScrollArea {
    Q_OBJECT
public:
    explicit TableView(QWidget* parent = nullptr);
    ~TableView() override;

    /// Not owned; must outlive the table or be reset to null.
    void setDataSource(TableViewDataSource* source);
    void setDelegate(TableViewDelegate* delegate);
    TableViewDataSource* dataSource() const { return m_dataSource; }

    /// Never null: a plain TextFieldCell until another is set.
    TextFieldCell* dataCell() const { return m_dataCell.get(); }
    void setDataCell(std::unique_ptr<TextFieldCell> cell);

    /// Reads row count and heights again and redraws. Selected rows that still exist and are not hidden stay
    /// selected.
    void reloadData();
    int numberOfRows() const { return static_cast<int>(m_tops.size()) - 1; }
    /// Reads the heights of these rows again; may be called while a row is drawn.
    void noteHeightOfRowsWithIndexesChanged(const IndexSet& rows);

    /// Also for a row outside the table.
    bool isRowHidden(int row) const;
    /// The next row that is not hidden; numberOfRows() when there is none.
    int rowAfter(int row) const;
    /// The same upward; -1 when there is none.
    int rowBefore(int row) const;

    /// Shown in place of the rows while there are none; null for nothing. Takes no part in the mouse's events
    /// if it is transparent for them.
    void setPlaceholder(std::unique_ptr<QWidget> placeholder);

    /// Scrolls as little as needed to show the whole row; a row that is hidden, or outside the table, changes
    /// nothing.
    void scrollRowToVisible(int row);
    /// The row's rectangle in the viewport's coordinates; empty for a row outside the table.
    QRectF rectOfRow(int row) const;
    /// The frame that its cell is drawn in, in points of the design.
    QRectF cellFrameOfRow(int row) const;
    /// The row at a point of the viewport; -1 when there is none.
    int rowAtPoint(const QPointF& point) const;

    bool allowsMultipleSelection() const { return m_allowsMultipleSelection; }
    /// The default is true.
    void setAllowsMultipleSelection(bool allows) { m_allowsMultipleSelection = allows; }
    const IndexSet& selectedRowIndexes() const { return m_selected; }
    /// Indexes outside the table, and of hidden rows, are dropped.
    void selectRowIndexes(IndexSet rows);
    /// The row that keys move from; -1 at first.
    int currentRow() const { return m_currentRow; }

    /// Called on a double-click anywhere in the table and on Enter; see clickedRow.
    void setDoubleAction(std::function<void()> action) { m_doubleAction = std::move(action); }
    /// The row of the last click or Enter; -1 when it hit none.
    int clickedRow() const { return m_clickedRow; }
    /// Performs the action of a double-click on `row`.
    void performDoubleAction(int row);

    /// Called with a place on the screen for a menu of rows: on a right click, which selects its row unless
    /// that is selected, and on the Menu key; see clickedRow.
    void setMenuAction(std::function<void(const QPoint& place)> action) { m_menuAction = std::move(action); }

    /// Called after the selection changed.
    void setSelectionDidChange(std::function<void()> handler) { m_selectionDidChange = std::move(handler); }

    /// The types a drop on this table may carry; replaces the former ones.
    void registerForDraggedTypes(const QStringList& types);
    const QStringList& registeredDraggedTypes() const { return m_draggedTypes; }
    /// For a drag that the table does not take itself: the row that something dropped at this point of the
    /// viewport would come before; nothing where there is no row.
    std::optional<int> insertionRowAt(const QPointF& point) const;
    /// Shows a line there and scrolls at the edges, until called with nothing.
    void setInsertionPoint(std::optional<QPointF> point);

    /// The row's cell, filled as for drawing.
    TextFieldCell& preparedCell(int row);

protected:
    void paintEvent(QPaintEvent* event) override;
    bool viewportEvent(QEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void scrollContentsBy(int dx, int dy) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dragLeaveEvent(QDragLeaveEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    void timerEvent(QTimerEvent* event) override;

private:
    struct Drop {
        int row;
        DropOperation operation;
        bool operator==(const Drop&) const = default;
    };

    void rescale();
    void reloadIfRowCountChanged();
    void layOutRows();
    double heightOf(int row) const;
    int rowAway(int row, int steps) const;
    void updatePlaceholder();
    void updateScrollBar();
    void drawRow(QPainter& painter, int row);
    void drawDropIndicator(QPainter& painter) const;
    void moveCurrentRow(int row, Qt::KeyboardModifiers modifiers);
    void click(int row, Qt::KeyboardModifiers modifiers);
    void changeSelection(IndexSet rows);
    void startDrag(int row);
    QPixmap pictureOfRows(const IndexSet& rows);
    Drop dropAt(const QPointF& point) const;
    std::optional<Drop> insertionAt(const QPointF& point) const;
    void proposeDrop(QDragMoveEvent* event);
    void setDrop(std::optional<Drop> drop);
    void autoscroll();

    TableViewDataSource* m_dataSource = nullptr;
    TableViewDelegate* m_delegate = nullptr;
    std::unique_ptr<TextFieldCell> m_dataCell;
    std::unique_ptr<QWidget> m_placeholder;

    std::vector<double> m_tops{
        0.0}; ///< The top of every row, and the bottom of the last, in points from the first.
    bool m_heightsChanged = false; ///< Set while drawing; the layout follows.
    bool m_drawing = false;

    bool m_allowsMultipleSelection = true;
    IndexSet m_selected;
    int m_currentRow = -1;
    int m_anchorRow = -1;
    int m_clickedRow = -1;
    bool m_showsFocus = false; ///< The last input was a key: mark the current row.

    QStringList m_draggedTypes;
    std::optional<QPointF> m_pressedAt; ///< Where a drag of rows may begin.
    int m_draggedRow = -1;              ///< The first of those taken, while a drag of this table lasts.
    std::optional<Drop> m_drop;
    bool m_showsInsertion = false; ///< Of a drag that the table does not take itself.
    QPointF m_dragPoint;
    QBasicTimer m_autoscrollTimer;

    std::function<void()> m_doubleAction;
    std::function<void(const QPoint&)> m_menuAction;
    std::function<void()> m_selectionDidChange;
};

} // namespace cocoa
