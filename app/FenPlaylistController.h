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

/// The page of the current playlist: a table of its entries and the box of playlists. It keeps no
/// copy of the list; every answer is read from the core when it is asked for.
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
    /// Before `initialize`: carries out all edits and notifies the page of them. It must outlive the page.
    void setEditor(app::PlaylistEditor& editor);

    void initialize() override;
    void reInitializeDragAndDrop();
    void reloadPlaylistData();
    /// Shows the list's name, and whether the list differs from its file.
    void updateSelector();
    void updatePlaylistViewSlow();
    /// Shows how far the reading of tags has come, and for a while what came of the last command.
    void updateStatusLine();
    /// Shows a line for a while, in the place of what came of the last command.
    void showNotice(const QString& text);
    void openSearch();
    /// Scrolls to the current row, past a search that hides it.
    void showCurrentRow();

    int numberOfRowsInTableView() override;
    QVariant objectValueForTableColumn(int row) override;
    void willDisplayCell(cocoa::TextFieldCell& cell, int row) override;
    double heightOfRow(int row) override;
    QString toolTipForCell(int row) override;
    void doubleClick();

    /// Of the playlist.
    TulRows selectedRows() const;
    /// The one that keys and the menu mean; -1 when there is none.
    std::int32_t currentRow() const;
    void playCurrentRow();

    /// Files of other programs are dragged to this place of the screen: shows where they would be inserted.
    void showDropPlace(const std::optional<QPointF>& place);
    /// The id of the entry that they would come before; 0 for the end.
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
    QElapsedTimer m_busy; ///< Invalid while nothing is being read.
    QElapsedTimer m_told; ///< Since the line has said what it says.
    /// Those that no internal playlist stands for, as of the last `updateSelector`.
    std::vector<UnsavedList> m_unsavedLists;
    QString m_outcome;
    QString m_notice;  ///< Empty when none is shown.
    int m_problem = 0; ///< The number of the last one shown.
    TulPlaybackState m_shownState{};
    std::unique_ptr<app::ListSearch> m_search; ///< Null until the page's view is loaded.
    std::uint64_t m_shownList = 0;             ///< The id of the one that the table was loaded from.
    std::uint64_t m_lastEntry = 0;             ///< The id of the one at `lastPlaylistEntry`; 0 for none.
};
