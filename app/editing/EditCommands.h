#pragma once

#include "core/playlist/TulPlaylist.h"

#include <QUndoCommand>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>

class TulPlayer;
struct LeftPlaylist;

namespace app {

/// Which rows are selected after an edit.
struct EditedSelection {
    TulRows rows;
    bool scrolls = true; ///< To the first one.
};

/// What commands work on.
struct EditedList {
    TulPlayer& player;
    std::function<TulRows()> selectedRows;
    /// The list has been edited. Without a selection, the selected rows stay selected.
    std::function<void(const std::optional<EditedSelection>&)> edited;
    /// Rows that were still being added have been taken back: the rest is not to come.
    std::function<void(std::uint64_t action)> addingUndone;
};

/// One step that can be taken back. It owns the entries that are not in the list.
class EditCommand : public QUndoCommand {
public:
    void undo() final;
    void redo() final;

protected:
    using Selection = std::optional<EditedSelection>;

    EditCommand(EditedList& list, const QString& text) : QUndoCommand(text), m_list(list) {}

    virtual Selection apply() = 0;
    virtual Selection revert() = 0;
    TulPlayer& player() const { return m_list.player; }
    EditedList& list() const { return m_list; }
    /// For destructors: many entries take a while to be destroyed.
    void discard(TulPlaylist::Entries&& entries) const;

private:
    EditedList& m_list;
    TulPlaylist::CurrentPlace m_before;
};

class RemoveRows : public EditCommand {
public:
    RemoveRows(EditedList& list, TulRows rows);
    ~RemoveRows() override;

private:
    Selection apply() override;
    Selection revert() override;

    TulRows m_rows;
    TulPlaylist::Entries m_removed;
};

class MoveRows : public EditCommand {
public:
    MoveRows(EditedList& list, TulRows from, TulRows to);

private:
    Selection apply() override;
    Selection revert() override;

    TulRows m_from;
    TulRows m_to;
};

/// Sorting, and whatever else gives all rows another order.
class ReorderRows : public EditCommand {
public:
    ReorderRows(EditedList& list, TulRows order, const QString& text);

private:
    Selection apply() override { return reorder(); }
    Selection revert() override { return reorder(); }
    Selection reorder();

    TulRows m_order; ///< To be given next.
};

/// What one action of the user adds. Rows that are found later are merged with those before, unless
/// something else has been edited meanwhile.
class AddRows : public EditCommand {
public:
    AddRows(EditedList& list, std::uint64_t action, std::int32_t first, TulPlaylist::Entries added,
            const QString& text);
    ~AddRows() override;

    int id() const override { return 1; }
    bool mergeWith(const QUndoCommand* other) override;

private:
    Selection apply() override;
    Selection revert() override;

    std::uint64_t m_action;
    TulRows m_rows;
    TulPlaylist::Entries m_added; ///< Empty while they are in the list.
};

/// Another list has taken the list's place; it is there already when the command is made.
class ReplaceList : public EditCommand {
public:
    /// `changesBack`: what comes back differs from its file.
    ReplaceList(EditedList& list, std::shared_ptr<LeftPlaylist> left, const QString& text, bool changesBack);
    ~ReplaceList() override;

    /// False while the other list is being stored.
    [[nodiscard]] bool isReady() const;

private:
    Selection apply() override;
    Selection revert() override;
    Selection exchange();

    std::shared_ptr<LeftPlaylist> m_other; ///< The one that is not shown.
    bool m_changesBack;
    bool m_isDone = true; ///< Until it is first taken back.
};

} // namespace app
