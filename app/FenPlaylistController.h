#pragma once

#include "app/FenMultiFunctionalViewController.h"
#include "core/playlist/TulPlaylist.h"
#include "core/playlist/UnsavedLists.h"
#include "platform/cocoa/ComboBoxDataSource.h"
#include "platform/cocoa/TableViewDataSource.h"
#include "platform/cocoa/TableViewDelegate.h"

#include <QElapsedTimer>
#include <QString>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

class PlaylistEntryCell;
enum class TulPlaybackState;

namespace app {
class ListSearch;
struct EditedSelection;
class PlaylistEditor;
class RowMenu;
class SearchField;
class SourceQueue;
class StatusLine;
} // namespace app

namespace cocoa {
class ComboBox;
class TableView;
} // namespace cocoa

/// The page of the current playlist: a table of its entries, and the playlist selector. Holds no copy of the
/// list, but reads the core on demand.
///
/// Threads: main thread only.
class FenPlaylistController : public FenMultiFunctionalViewController,
                              public cocoa::TableViewDataSource,
                              public cocoa::TableViewDelegate,
                              public cocoa::ComboBoxDataSource {
public:
    FenPlaylistController();
    ~FenPlaylistController() override;

    /// The current index when the slow update last brought it into view.
    std::int32_t lastPlaylistEntry = -1;
    /// Null until the page's view is loaded.
    cocoa::TableView* playlistView = nullptr;
    cocoa::ComboBox* playlistSelector = nullptr;
    app::StatusLine* statusLine = nullptr;
    app::SearchField* searchField = nullptr;
    /// Set by the delegate before `initialize`.
    app::SourceQueue* sources = nullptr;
    /// Sets the editor that carries out all edits and notifies the page. Call it before `initialize`. The
    /// editor must outlive the page.
    void setEditor(app::PlaylistEditor& editor);

    void initialize() override;
    void reInitializeDragAndDrop();
    void reloadPlaylistData();
    /// Shows the list's name, and whether the list differs from its file.
    void updateSelector();
    void updatePlaylistViewSlow();
    /// Shows the progress of reading tags, and for a while the result of the last command.
    void updateStatusLine();
    /// Shows a text for a while, instead of the result of the last command.
    void showNotice(const QString& text);
    void openSearch();
    /// Scrolls to the current row. Closes a search that hides it.
    void showCurrentRow();

    int numberOfRowsInTableView() override;
    QVariant objectValueForTableColumn(int row) override;
    void willDisplayCell(cocoa::TextFieldCell& cell, int row) override;
    double heightOfRow(int row) override;
    QString toolTipForCell(int row) override;
    void doubleClick();

    /// The selected rows.
    TulRows selectedRows() const;
    /// The row that keys and menu refer to; -1 for none.
    std::int32_t currentRow() const;
    void playCurrentRow();

    /// Shows where a file drop at this point of the screen would insert; none hides it.
    void showDropPlace(const std::optional<QPointF>& place);
    /// The id of the entry before which the drop would insert; 0 for the end.
    std::uint64_t entryAtDropPlace(const QPointF& place) const;

    bool writeRowsWithIndexes(const cocoa::IndexSet& rows, cocoa::Pasteboard& pasteboard) override;
    cocoa::DragOperation validateDrop(const cocoa::Pasteboard& pasteboard, int proposedRow,
                                      cocoa::DropOperation operation) override;
    bool acceptDrop(const cocoa::Pasteboard& pasteboard, int row, cocoa::DropOperation operation) override;

    void playlistNameChange();
    int numberOfItemsInComboBox() override;
    std::optional<QString> objectValueForItemAtIndex(int index) override;
    bool isMarkedItemAtIndex(int index) override;
    std::int64_t indexOfItemWithStringValue(const QString& string) override;

protected:
    void loadView(QWidget& view) override;

private:
    void updateRow(std::int32_t row);
    void setUpTable();
    void setUpSearch();
    void showEdited(const std::optional<app::EditedSelection>& selection);
    void play(std::int32_t row);
    std::optional<QPointF> placeInTable(const QPointF& place) const;
    void showsStatus(bool shows);
    void layOutTable();
    void markFound(PlaylistEntryCell& cell) const;
    bool isInView(std::uint64_t entry) const;
    QString outcomeText() const;
    void updateUnsavedLists();
    QString failureOf(int row) const;

    app::PlaylistEditor* m_editor = nullptr;
    std::unique_ptr<app::RowMenu> m_rowMenu;
    QElapsedTimer m_busy;      ///< Started when reading began; invalid otherwise.
    QElapsedTimer m_sinceText; ///< Since the last update of the progress text.
    /// Those without an internal playlist, as of the last `updateSelector`.
    std::vector<UnsavedList> m_unsavedLists;
    QString m_outcome;
    QString m_notice;  ///< Empty when none is shown.
    int m_problem = 0; ///< The number of the last one shown.
    TulPlaybackState m_shownState{};
    std::unique_ptr<app::ListSearch> m_search; ///< Null until the page's view is loaded.
    std::uint64_t m_shownList = 0;             ///< The id of the list that the table shows.
    std::uint64_t m_lastEntry = 0;             ///< The id of the entry at `lastPlaylistEntry`; 0 for none.
};
