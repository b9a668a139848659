#pragma once

#include <QAction>
#include <QMenu>

#include <functional>
#include <list>
#include <string>
#include <vector>

class FenPlaylistController;

namespace app {

class PlaylistEditor;

/// What can be done with the selected rows of the playlist: the menu of a right click, and its keys.
///
/// Threads: main thread only. To be destroyed before the page's table.
class RowMenu {
public:
    RowMenu(FenPlaylistController& page, PlaylistEditor& editor);
    RowMenu(const RowMenu&) = delete;
    RowMenu& operator=(const RowMenu&) = delete;

    void showAt(const QPoint& place);

private:
    QAction* command(const QString& title, const QKeySequence& keys, std::function<void()> action);
    [[nodiscard]] std::vector<std::string> selectedSources() const;
    [[nodiscard]] std::string currentSource() const;
    void copy() const;

    FenPlaylistController& m_page;
    QMenu m_menu;
    QAction* m_remove; ///< The menu's, as are these.
    QAction* m_show;
};

} // namespace app
