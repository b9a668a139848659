#pragma once

#include "app/search/EntryFilter.h"
#include "app/search/FoldedText.h"

#include <QObject>
#include <QTimer>

#include <cstdint>
#include <functional>

class QKeyEvent;

namespace cocoa {
class TableView;
}

namespace app {
class SearchField;

/// The search in the playlist's table: while there is a text in the field, the table's delegate hides the
/// rows that do not match. The rows keep their indexes, so that nothing else of the page needs to know. The
/// field comes when one types in the list, and goes with Escape; arrows and Enter in the field are the
/// table's.
///
/// Threads: main thread only. Owns neither widget; they outlive it.
class ListSearch : public QObject {
public:
    /// `list` gives the current playlist. `layOut` is called when the field has come or gone.
    ListSearch(SearchField& field, cocoa::TableView& table, std::function<const TulPlaylist&()> list,
               std::function<void()> layOut);

    bool isOpen() const;
    /// Shows the field and gives it the keyboard.
    void open();
    /// Shows all rows. What was found stays selected; where nothing was, the row of before is again.
    void close();

    bool hides(std::int32_t row);
    /// What the search has found in a text of a row.
    std::vector<TextRange> rangesIn(const QString& text) const;

    /// Rows have been appended, removed or moved, and the table has been reloaded.
    void listChanged();
    /// The texts of this row have changed.
    void rowChanged(std::int32_t row);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    bool takeTableKey(QKeyEvent& key);
    bool takeFieldKey(QKeyEvent& key);
    void search();
    void lookOn();
    void showChangedRows();
    void selectFirst();
    void selectEntry(std::uint64_t id);
    void showResult();

    SearchField& m_field;
    cocoa::TableView& m_table;
    std::function<const TulPlaylist&()> m_list;
    std::function<void()> m_layOut;
    EntryFilter m_filter;
    std::uint64_t m_entryBefore = 0; ///< The id of the current row's when the field came; 0 for none.
    QTimer m_lookingOn;              ///< While rows have not been looked through.
    QTimer m_changes;                ///< Rows that are found together are shown together.
};

} // namespace app
