// Hidden rows and the placeholder of the table.
#include "platform/cocoa/TableView.h"

#include <algorithm>

namespace cocoa {

bool TableView::isRowHidden(int row) const {
    if (row < 0 || row >= numberOfRows()) return true;
    return m_tops[std::size_t(row)] == m_tops[std::size_t(row) + 1];
}

int TableView::rowAfter(int row) const {
    if (row >= numberOfRows()) return numberOfRows();
    // A hidden row's bottom is its top.
    const auto from = m_tops.begin() + row + 1;
    const auto bottom = std::upper_bound(from, m_tops.end(), *from);
    return bottom == m_tops.end() ? numberOfRows() : int(bottom - m_tops.begin()) - 1;
}

int TableView::rowBefore(int row) const {
    if (row < 0) return -1;
    const auto top = m_tops.begin() + std::min(row, numberOfRows());
    return int(std::lower_bound(m_tops.begin(), top, *top) - m_tops.begin()) - 1;
}

/// The row `steps` visible rows below, or above if negative, limited to the ends; -1 when all are hidden.
int TableView::rowAway(int row, int steps) const {
    int reached = isRowHidden(row) ? -1 : row;
    for (; steps > 0 && rowAfter(row) < numberOfRows(); --steps)
        reached = row = rowAfter(row);
    for (; steps < 0 && rowBefore(row) >= 0; ++steps)
        reached = row = rowBefore(row);
    if (reached < 0) reached = rowAfter(-1);
    return reached < numberOfRows() ? reached : -1;
}

void TableView::setPlaceholder(std::unique_ptr<QWidget> placeholder) {
    m_placeholder = std::move(placeholder);
    if (m_placeholder) m_placeholder->setParent(viewport());
    updatePlaceholder();
}

void TableView::updatePlaceholder() {
    if (!m_placeholder) return;
    m_placeholder->resize(viewport()->size());
    m_placeholder->setVisible(numberOfRows() == 0);
    // A screen reader knows the table's rows only.
    setAccessibleDescription(m_placeholder->isHidden() ? QString() : m_placeholder->accessibleName());
}

} // namespace cocoa
