#pragma once

#include "platform/cocoa/TextFieldCell.h"

namespace cocoa {

/// Prepares the cells and heights of a table's rows. Called on the main thread.
class TableViewDelegate {
public:
    virtual ~TableViewDelegate() = default;

    /// Right before `row` is drawn with `cell`, the table's one data cell.
    virtual void willDisplayCell(TextFieldCell& cell, int row) = 0;
    /// Points from this row's top to the next one's; 0 hides the row.
    virtual double heightOfRow(int row);
    /// What is shown while the pointer rests on a row, as plain text; empty for nothing.
    virtual QString toolTipForCell(int /*row*/) { return {}; }
};

} // namespace cocoa
