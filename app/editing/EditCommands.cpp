#include "app/editing/EditCommands.h"

#include "core/player/TulPlayer.h"

#include <algorithm>
#include <numeric>
#include <utility>

namespace app {
namespace {

/// Fewer are destroyed faster than they are handed to a worker.
constexpr std::size_t fewEntries = 100;

TulRows rowsFrom(std::int32_t first, std::size_t count) {
    TulRows rows(count);
    std::iota(rows.begin(), rows.end(), first);
    return rows;
}

} // namespace

void EditCommand::redo() {
    m_before = player().playlist->currentPlace();
    const Selection selection = apply();
    player().endEdit();
    m_list.edited(selection);
}

void EditCommand::undo() {
    const Selection selection = revert();
    player().playlist->restorePlace(m_before);
    player().endEdit();
    m_list.edited(selection);
}

void EditCommand::discard(TulPlaylist::Entries&& entries) const {
    if (entries.size() > fewEntries)
        player().discard(std::make_shared<TulPlaylist::Entries>(std::move(entries)));
}

RemoveRows::RemoveRows(EditedList& list, TulRows rows)
    : EditCommand(list, QStringLiteral("Remove")), m_rows(std::move(rows)) {}

RemoveRows::~RemoveRows() {
    discard(std::move(m_removed));
}

EditCommand::Selection RemoveRows::apply() {
    m_removed = player().removeEntries(m_rows);
    const auto count = static_cast<std::int32_t>(player().playlist->entryCount());
    if (count == 0) return EditedSelection{};
    return EditedSelection{.rows = {std::min(m_rows.front(), count - 1)}};
}

EditCommand::Selection RemoveRows::revert() {
    player().insertEntries(m_rows, std::exchange(m_removed, {}));
    return EditedSelection{.rows = m_rows};
}

MoveRows::MoveRows(EditedList& list, TulRows from, TulRows to)
    : EditCommand(list, QStringLiteral("Move")), m_from(std::move(from)), m_to(std::move(to)) {}

EditCommand::Selection MoveRows::apply() {
    player().playlist->moveEntries(m_from, m_to);
    return EditedSelection{.rows = m_to};
}

EditCommand::Selection MoveRows::revert() {
    player().playlist->moveEntries(m_to, m_from);
    return EditedSelection{.rows = m_from};
}

ReorderRows::ReorderRows(EditedList& list, TulRows order, const QString& text)
    : EditCommand(list, text), m_order(std::move(order)) {}

EditCommand::Selection ReorderRows::reorder() {
    TulRows selected = list().selectedRows();
    m_order = player().playlist->reorderEntries(m_order);
    for (std::int32_t& row : selected)
        if (static_cast<std::size_t>(row) < m_order.size()) row = m_order[static_cast<std::size_t>(row)];
    std::ranges::sort(selected);
    return EditedSelection{.rows = std::move(selected)};
}

AddRows::AddRows(EditedList& list, std::uint64_t action, std::int32_t first, TulPlaylist::Entries added,
                 const QString& text)
    : EditCommand(list, text),
      m_action(action),
      m_rows(rowsFrom(first, added.size())),
      m_added(std::move(added)) {}

AddRows::~AddRows() {
    discard(std::move(m_added));
}

EditCommand::Selection AddRows::apply() {
    const bool appends = m_rows.front() == player().playlist->entryCount();
    player().insertEntries(m_rows, std::exchange(m_added, {}));
    if (appends) return std::nullopt;
    TulRows selected = list().selectedRows();
    const auto inserted = static_cast<std::int32_t>(m_rows.size());
    for (std::int32_t& row : selected)
        if (row >= m_rows.front()) row += inserted;
    return EditedSelection{.rows = std::move(selected), .scrolls = false};
}

EditCommand::Selection AddRows::revert() {
    list().addingUndone(m_action);
    TulRows selected = list().selectedRows();
    m_added = player().removeEntries(m_rows);
    std::erase_if(selected, [this](auto row) { return std::ranges::binary_search(m_rows, row); });
    for (std::int32_t& row : selected)
        row -= static_cast<std::int32_t>(std::ranges::lower_bound(m_rows, row) - m_rows.begin());
    return EditedSelection{.rows = std::move(selected), .scrolls = false};
}

/// The rows of both are next to each other, but for what was inserted before an entry that has moved.
bool AddRows::mergeWith(const QUndoCommand* other) {
    const auto& later = static_cast<const AddRows&>(*other);
    if (later.m_action != m_action || later.m_rows.front() <= m_rows.back()) return false;
    m_rows.insert(m_rows.end(), later.m_rows.begin(), later.m_rows.end());
    return true;
}

ReplaceList::ReplaceList(EditedList& list, std::shared_ptr<LeftPlaylist> left, const QString& text,
                         bool changesBack)
    : EditCommand(list, text), m_other(std::move(left)), m_changesBack(changesBack) {}

ReplaceList::~ReplaceList() {
    if (m_other->list) player().discard(std::move(m_other->list));
}

bool ReplaceList::isReady() const {
    return m_other->list != nullptr;
}

EditCommand::Selection ReplaceList::apply() {
    if (std::exchange(m_isDone, false)) return EditedSelection{};
    return exchange();
}

EditCommand::Selection ReplaceList::revert() {
    if (m_changesBack) m_other->list->markChanged();
    return exchange();
}

EditCommand::Selection ReplaceList::exchange() {
    auto arrived = std::move(m_other->arrived);
    const std::size_t unread = m_other->list->unreadCount();
    m_other = player().exchangePlaylist(std::move(m_other->list), unread);
    m_other->arrived = std::move(arrived);
    player().tagReader.readRest();
    return EditedSelection{};
}

} // namespace app
