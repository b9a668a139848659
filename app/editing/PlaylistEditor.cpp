#include "app/editing/PlaylistEditor.h"

#include "app/FenAppDelegate.h"
#include "core/player/TulPlayer.h"

#include <algorithm>
#include <numeric>
#include <random>
#include <utility>

namespace app {
namespace {

constexpr int maxSteps = 100;

/// Where these rows are when they have been moved to before a row.
TulRows rowsBefore(std::int32_t before, const TulRows& rows) {
    const auto above = std::ranges::lower_bound(rows, before) - rows.begin();
    TulRows to(rows.size());
    std::iota(to.begin(), to.end(), before - static_cast<std::int32_t>(above));
    return to;
}

} // namespace

PlaylistEditor::PlaylistEditor(TulPlayer& player)
    : list{.player = player, .selectedRows = {}, .edited = {}, .addingUndone = {}} {
    m_steps.setUndoLimit(maxSteps);
    m_undo.setShortcut(Qt::CTRL | Qt::Key_Z);
    m_redo.setShortcut(Qt::CTRL | Qt::SHIFT | Qt::Key_Z);
    const auto connect = [this](QAction& action, void (QUndoStack::*step)()) {
        QObject::connect(&action, &QAction::triggered, &m_steps, [this, step] {
            if (FenAppDelegate::takesCommands()) this->step(step);
        });
    };
    connect(m_undo, &QUndoStack::undo);
    connect(m_redo, &QUndoStack::redo);
    QObject::connect(&m_steps, &QUndoStack::indexChanged, &m_steps, [this] {
        ++m_edits;
        m_waiting = nullptr; // what was done since is not to be taken back instead
        showSteps();
    });
    showSteps();
    player.playlistReplaced = [this](auto left, auto why) { takeReplaced(std::move(left), why); };
}

PlaylistEditor::~PlaylistEditor() {
    list.player.playlistReplaced = nullptr;
}

template <typename Command, typename... Arguments> void PlaylistEditor::push(Arguments&&... arguments) {
    // The stack owns it from here on.
    m_steps.push(std::make_unique<Command>(list, std::forward<Arguments>(arguments)...).release());
}

void PlaylistEditor::takeReplaced(std::shared_ptr<LeftPlaylist> left, TulPlayer::Replacement why) {
    using Replacement = TulPlayer::Replacement;
    const bool isEmpty = left->list && left->list->entryCount() == 0 && left->list->name.empty();
    if (why == Replacement::cleared && isEmpty) return;
    if (why == Replacement::restored && isEmpty && m_steps.count() == 0) return;
    left->arrived = [this] {
        if (m_waiting) step(m_waiting);
    };
    const QString text = why == Replacement::cleared    ? QObject::tr("Clear")
                         : why == Replacement::reverted ? QObject::tr("Revert")
                                                        : QObject::tr("Open");
    push<ReplaceList>(std::move(left), text, why == Replacement::reverted);
}

void PlaylistEditor::step(void (QUndoStack::*direction)()) {
    const int index = direction == &QUndoStack::undo ? m_steps.index() - 1 : m_steps.index();
    const auto* const replacing = dynamic_cast<const ReplaceList*>(m_steps.command(index));
    m_waiting = replacing && !replacing->isReady() ? direction : nullptr;
    if (!m_waiting) (m_steps.*direction)();
}

void PlaylistEditor::showSteps() {
    m_undo.setText(QObject::tr("Undo %1").arg(m_steps.undoText()).trimmed());
    m_redo.setText(QObject::tr("Redo %1").arg(m_steps.redoText()).trimmed());
    m_undo.setEnabled(m_steps.canUndo());
    m_redo.setEnabled(m_steps.canRedo());
}

void PlaylistEditor::remove(const TulRows& rows) {
    if (!rows.empty()) push<RemoveRows>(rows);
}

void PlaylistEditor::move(const TulRows& rows, std::int32_t before) {
    moveTo(rows, rowsBefore(std::clamp(before, 0, rowCount()), rows));
}

void PlaylistEditor::moveUp(const TulRows& rows) {
    TulRows to = rows;
    for (std::size_t i = 0; i < to.size(); ++i)
        to[i] = std::max(rows[i] - 1, static_cast<std::int32_t>(i));
    moveTo(rows, std::move(to));
}

void PlaylistEditor::moveDown(const TulRows& rows) {
    TulRows to = rows;
    for (std::size_t i = 0; i < to.size(); ++i)
        to[i] = std::min(rows[i] + 1, rowCount() - static_cast<std::int32_t>(rows.size() - i));
    moveTo(rows, std::move(to));
}

void PlaylistEditor::moveTo(const TulRows& rows, TulRows to) {
    if (to != rows) push<MoveRows>(rows, std::move(to));
}

void PlaylistEditor::playNext(const TulRows& rows) {
    const TulPlaylist& playlist = *list.player.playlist;
    TulRows others = rows;
    std::erase_if(others, [&](std::int32_t row) { return playlist.entryAt(row)->active; });
    if (others.empty()) return;
    const std::int32_t before = playlist.rowAfterCurrent();
    TulRows to = rowsBefore(before, others);
    // Of a removed entry only the place is left: rows may come behind it and keep their numbers.
    if (to != others || to.front() < before) push<MoveRows>(std::move(others), std::move(to));
}

void PlaylistEditor::sort(SortKey key) {
    const auto texts = std::make_shared<RowSort>(*list.player.playlist, key);
    list.player.workers.run(Workers::Lane::own,
                            [this, key, texts, edits = m_edits](const Workers::Reply& reply) {
                                const auto order = std::make_shared<TulRows>(texts->order());
                                reply.post([this, key, order, edits] {
                                    if (edits != m_edits || std::ssize(*order) != rowCount())
                                        return sort(key);
                                    reorder(std::move(*order), QObject::tr("Sort"));
                                });
                            });
}

void PlaylistEditor::reverse() {
    TulRows order(static_cast<std::size_t>(rowCount()));
    std::iota(order.rbegin(), order.rend(), 0);
    reorder(std::move(order), QObject::tr("Reverse"));
}

void PlaylistEditor::randomise() {
    TulRows order(static_cast<std::size_t>(rowCount()));
    std::iota(order.begin(), order.end(), 0);
    std::ranges::shuffle(order, std::mt19937_64(std::random_device()()));
    reorder(std::move(order), QObject::tr("Randomise"));
}

void PlaylistEditor::reorder(TulRows order, const QString& text) {
    if (!std::ranges::is_sorted(order)) push<ReorderRows>(std::move(order), text);
}

std::int32_t PlaylistEditor::add(std::uint64_t action, const Place& place, TulPlaylist::Entries entries) {
    const std::int32_t row = place.beforeEntry == 0 ? rowCount() : rowOf(place.beforeEntry);
    m_lastRow = row + static_cast<std::int32_t>(entries.size());
    push<AddRows>(action, row, std::move(entries), place.isDrop ? QObject::tr("Drop") : QObject::tr("Add"));
    return row;
}

std::int32_t PlaylistEditor::rowCount() const {
    return static_cast<std::int32_t>(list.player.playlist->entryCount());
}

/// The row count when it is gone.
std::int32_t PlaylistEditor::rowOf(std::uint64_t entry) {
    const auto& entries = list.player.playlist->entries;
    const auto isIt = [entry](const auto& each) { return each->id == entry; };
    if (m_lastRow < rowCount() && isIt(entries[static_cast<std::size_t>(m_lastRow)])) return m_lastRow;
    return static_cast<std::int32_t>(std::ranges::find_if(entries, isIt) - entries.begin());
}

} // namespace app
