#pragma once

#include "platform/cocoa/TableView.h"

#include <atomic>
#include <functional>
#include <vector>

/// A data source of numbers that records the table's requests.
class TestRows : public cocoa::TableViewDataSource, public cocoa::TableViewDelegate {
public:
    explicit TestRows(int count) {
        for (int number = 0; number < count; ++number)
            numbers.push_back(number);
    }

    int numberOfRowsInTableView() override { return int(numbers.size()); }
    QVariant objectValueForTableColumn(int row) override { return numbers.at(std::size_t(row)); }
    void willDisplayCell(cocoa::TextFieldCell& cell, int row) override {
        displayed.push_back(row);
        cell.setBackgroundColor(table != nullptr && table->selectedRowIndexes().contains(row) ? Qt::blue
                                                                                              : Qt::black);
        if (table != nullptr) table->noteHeightOfRowsWithIndexesChanged({row});
    }
    double heightOfRow(int row) override { return hides(row) ? 0 : height; }

    bool writeRowsWithIndexes(const cocoa::IndexSet& rows, cocoa::Pasteboard& pasteboard) override {
        pasteboard.setString(QString::number(*rows.begin()), type);
        dragBegan = true;
        return true;
    }
    cocoa::DragOperation validateDrop(const cocoa::Pasteboard& /*pasteboard*/, int proposedRow,
                                      cocoa::DropOperation /*operation*/) override {
        proposed = proposedRow;
        return proposedRow < 0 ? cocoa::DragOperation::none : cocoa::DragOperation::move;
    }
    bool acceptDrop(const cocoa::Pasteboard& pasteboard, int row, cocoa::DropOperation operation) override {
        dropped.push_back({pasteboard.stringForType(type).value_or(QString()), row, operation});
        return true;
    }

    struct Dropped {
        QString string;
        int row;
        cocoa::DropOperation operation;
    };
    const QString type = "test.rowindex";
    std::vector<int> numbers;
    double height = 55;
    std::function<bool(int row)> hides = [](int) { return false; };
    std::vector<int> displayed;
    std::vector<Dropped> dropped;
    std::atomic<bool> dragBegan = false; ///< These two are read by the thread that moves the pointer.
    std::atomic<int> proposed = -1;
    cocoa::TableView* table = nullptr;
};
