#include "app/editing/RowMenu.h"

#include "app/FenAppDelegate.h"
#include "app/FenPlaylistController.h"
#include "app/Skin.h"
#include "app/editing/InformationPanel.h"
#include "app/editing/PlaylistEditor.h"
#include "app/editing/SourceAddress.h"
#include "app/editing/showInFileManager.h"
#include "core/player/TulPlayer.h"
#include "core/playlist/resolveEntrySource.h"
#include "platform/cocoa/TableView.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QMimeData>

#include <utility>

namespace app {

RowMenu::RowMenu(FenPlaylistController& page, PlaylistEditor& editor) : m_page(page) {
    dressInSkin(m_menu);
    const auto rows = [this] { return m_page.selectedRows(); };
    // Behind a tab is what is shown of a key. Enter is the table's own.
    command(QObject::tr("Play\tEnter"), {}, [this] { m_page.playCurrentRow(); });
    command(QObject::tr("Play Next"), {}, [&editor, rows] { editor.playNext(rows()); });
    m_menu.addSeparator();
    m_remove =
        command(QObject::tr("Remove\tDelete"), Qt::Key_Delete, [&editor, rows] { editor.remove(rows()); });
    m_menu.addAction(&editor.undoAction());
    m_menu.addSeparator();
    m_show = command(QObject::tr("Show in File Manager"), {}, [this] { showInFileManager(currentSource()); });
    command(QObject::tr("Copy Address"), QKeySequence::Copy, [this] { copy(); });
    command(QObject::tr("File Information…\tAlt+Enter"), Qt::ALT | Qt::Key_Return, [this] {
        InformationPanel::show(*m_page.playlistView, m_page.player->workers, currentSource());
    });
    const struct {
        QString title;
        Qt::Key key;
        void (PlaylistEditor::*move)(const TulRows& rows);
    } moves[] = {{QObject::tr("Move Up"), Qt::Key_Up, &PlaylistEditor::moveUp},
                 {QObject::tr("Move Down"), Qt::Key_Down, &PlaylistEditor::moveDown}};
    for (const auto& [title, key, move] : moves) {
        QAction* const item =
            command(title, Qt::ALT | key, [&editor, rows, move = move] { (editor.*move)(rows()); });
        item->setAutoRepeat(true);
        m_menu.removeAction(item); // a key only
    }
    m_page.playlistView->setMenuAction([this](const QPoint& place) { showAt(place); });
}

QAction* RowMenu::command(const QString& title, const QKeySequence& keys, std::function<void()> action) {
    QAction* const item = m_menu.addAction(title);
    item->setShortcut(keys);
    item->setShortcutContext(Qt::WidgetWithChildrenShortcut);
    item->setAutoRepeat(false);
    QObject::connect(item, &QAction::triggered, item, [this, action = std::move(action)] {
        if (FenAppDelegate::takesCommands() && !m_page.selectedRows().empty()) action();
    });
    m_page.playlistView->addAction(item);
    return item;
}

void RowMenu::showAt(const QPoint& place) {
    const std::size_t count = m_page.selectedRows().size();
    m_remove->setText(count == 1 ? QObject::tr("Remove\tDelete")
                                 : QObject::tr("Remove %1 Rows\tDelete").arg(count));
    m_show->setEnabled(!isAddress(currentSource()));
    m_menu.popup(place);
}

std::vector<std::string> RowMenu::selectedSources() const {
    std::vector<std::string> sources;
    for (const std::int32_t row : m_page.selectedRows())
        sources.push_back(m_page.player->playlist->entryAt(row)->source);
    return sources;
}

std::string RowMenu::currentSource() const {
    return m_page.player->playlist->entryAt(m_page.currentRow())->source;
}

void RowMenu::copy() const {
    QGuiApplication::clipboard()->setMimeData(copyOf(selectedSources()).release()); // owns it from here on
}

} // namespace app
