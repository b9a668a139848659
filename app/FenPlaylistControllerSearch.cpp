// The visible part of the list: search, table geometry, scrolling to the playing row.

#include "app/EmptyListHint.h"
#include "app/FenPlaylistController.h"
#include "app/Skin.h"
#include "app/StatusLine.h"
#include "app/search/ListSearch.h"
#include "app/search/SearchField.h"
#include "controls/PlaylistEntryCell.h"
#include "core/player/TulPlayer.h"
#include "platform/cocoa/TableView.h"

#include <algorithm>

void FenPlaylistController::setUpSearch() {
    app::dressInSkin(*searchField);
    playlistView->setPlaceholder(std::make_unique<app::EmptyListHint>());
    m_search = std::make_unique<app::ListSearch>(
        *searchField, *playlistView, [this]() -> const TulPlaylist& { return *player->playlist; },
        [this] { layOutTable(); });
}

void FenPlaylistController::openSearch() {
    m_search->open();
}

void FenPlaylistController::showCurrentRow() {
    const std::int32_t current = player->playlist->currentIndex;
    if (playlistView->isRowHidden(current)) m_search->close();
    playlistView->scrollRowToVisible(current);
}

/// Places the table between search field and status line.
void FenPlaylistController::layOutTable() {
    const int top = searchField->isHidden() ? 0 : searchField->geometry().bottom() + 1;
    const QRect line = statusLine->geometry();
    const int bottom = statusLine->isHidden() ? line.bottom() + 1 : line.top();
    playlistView->setGeometry(0, top, playlistView->width(), bottom - top);
}

void FenPlaylistController::markFound(PlaylistEntryCell& cell) const {
    cell.setInfo1Marks(m_search->rangesIn(cell.info1().value_or(QString())));
    const bool isSecondLineSought = !cell.failed();
    cell.setInfo2Marks(isSecondLineSought ? m_search->rangesIn(cell.info2().value_or(QString()))
                                          : std::vector<TextRange>());
}

QString FenPlaylistController::toolTipForCell(int row) {
    const auto& cell = static_cast<const PlaylistEntryCell&>(playlistView->preparedCell(row));
    return cell.toolTip(playlistView->cellFrameOfRow(row));
}

bool FenPlaylistController::isInView(std::uint64_t entry) const {
    if (!playlistView) return false;
    const auto& entries = player->playlist->entries;
    const int rows = std::min(playlistView->numberOfRows(), static_cast<int>(entries.size()));
    const int height = playlistView->viewport()->height();
    for (int row = playlistView->rowAtPoint({0, 0}); row >= 0 && row < rows;
         row = playlistView->rowAfter(row)) {
        if (playlistView->rectOfRow(row).top() >= height) return false;
        if (entries[static_cast<std::size_t>(row)]->id == entry) return true;
    }
    return false;
}
