// Editing on the playlist page: selected rows, drag and drop.

#include "app/FenPlaylistController.h"
#include "app/editing/PlaylistEditor.h"
#include "app/editing/SourceAddress.h"
#include "core/player/TulPlayer.h"
#include "platform/cocoa/TableView.h"

#include <algorithm>

namespace {

const QString draggedType = QStringLiteral("tuq.playlistindex");
const QString addressesType = QStringLiteral("text/uri-list");

} // namespace

void FenPlaylistController::reInitializeDragAndDrop() {
    playlistView->registerForDraggedTypes({draggedType});
}

void FenPlaylistController::setEditor(app::PlaylistEditor& editor) {
    m_editor = &editor;
    editor.list.selectedRows = [this] { return selectedRows(); };
    editor.list.edited = [this](const auto& selection) { showEdited(selection); };
}

TulRows FenPlaylistController::selectedRows() const {
    if (!playlistView) return {};
    const cocoa::IndexSet& selected = playlistView->selectedRowIndexes();
    return {selected.begin(), selected.end()};
}

std::int32_t FenPlaylistController::currentRow() const {
    return playlistView->currentRow();
}

/// The table's rows have changed under it.
void FenPlaylistController::showEdited(const std::optional<app::EditedSelection>& selection) {
    if (!playlistView) return;
    reloadPlaylistData();
    if (!selection) return;
    playlistView->selectRowIndexes({selection->rows.begin(), selection->rows.end()});
    if (selection->scrolls && !selection->rows.empty())
        playlistView->scrollRowToVisible(selection->rows.front());
}

void FenPlaylistController::showDropPlace(const std::optional<QPointF>& place) {
    if (playlistView) playlistView->setInsertionPoint(place ? placeInTable(*place) : std::nullopt);
}

std::uint64_t FenPlaylistController::entryAtDropPlace(const QPointF& place) const {
    const auto point = placeInTable(place);
    const auto row = point ? playlistView->insertionRowAt(*point) : std::nullopt;
    return row && *row < player->playlist->entryCount() ? player->playlist->entryAt(*row)->id : 0;
}

/// In the viewport's coordinates; nothing outside of it.
std::optional<QPointF> FenPlaylistController::placeInTable(const QPointF& place) const {
    if (!playlistView || !playlistView->isVisible()) return std::nullopt;
    const QPointF point = playlistView->viewport()->mapFromGlobal(place);
    return QRectF(playlistView->viewport()->rect()).contains(point) ? std::optional(point) : std::nullopt;
}

bool FenPlaylistController::writeRowsWithIndexes(const cocoa::IndexSet& rows, cocoa::Pasteboard& pasteboard) {
    reInitializeDragAndDrop();
    pasteboard.setString(QString::number(*rows.begin()), draggedType);
    std::vector<std::string> dragged;
    for (const int row : rows)
        dragged.push_back(player->playlist->entryAt(row)->source);
    const QByteArray addresses = app::addressList(dragged);
    if (!addresses.isEmpty()) pasteboard.setString(QString::fromLatin1(addresses), addressesType);
    return true;
}

cocoa::DragOperation FenPlaylistController::validateDrop(const cocoa::Pasteboard& /*pasteboard*/,
                                                         int proposedRow,
                                                         cocoa::DropOperation /*operation*/) {
    return proposedRow >= 0 ? cocoa::DragOperation::move : cocoa::DragOperation::none;
}

bool FenPlaylistController::acceptDrop(const cocoa::Pasteboard& pasteboard, int row,
                                       cocoa::DropOperation /*operation*/) {
    const auto source = pasteboard.stringForType(draggedType);
    if (!source) return true;
    // The pasteboard holds the first row; a selected row is moved with the whole selection.
    const std::int32_t first = source->toInt();
    if (first < 0 || first >= numberOfRowsInTableView()) return true;
    TulRows rows = selectedRows();
    if (!std::ranges::binary_search(rows, first)) rows = {first};
    // What comes from above ends at the row that it is dropped on, whose place is taken from below.
    m_editor->move(rows, rows.front() < row ? row + 1 : row);
    return true;
}
