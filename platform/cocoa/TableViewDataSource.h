#pragma once

#include "platform/cocoa/Pasteboard.h"

#include <QVariant>

#include <set>

namespace cocoa {

/// Row indexes in ascending order, from 0.
using IndexSet = std::set<int>;

enum class DragOperation { none = 0, move = 16 };
/// Where a drop is proposed: onto a row, or above it (above the row count means below the last row).
enum class DropOperation { on, above };

/// Provides the rows of a table, and handles its drags. Called on the main thread.
class TableViewDataSource {
public:
    virtual ~TableViewDataSource() = default;

    virtual int numberOfRowsInTableView() = 0;
    /// The value that the cell gets before the row is drawn.
    virtual QVariant objectValueForTableColumn(int row);

    /// A drag of `rows` begins: fill the pasteboard and return true, or return false for no drag.
    virtual bool writeRowsWithIndexes(const IndexSet& rows, Pasteboard& pasteboard);
    virtual DragOperation validateDrop(const Pasteboard& pasteboard, int proposedRow,
                                       DropOperation operation);
    virtual bool acceptDrop(const Pasteboard& pasteboard, int row, DropOperation operation);
};

} // namespace cocoa
