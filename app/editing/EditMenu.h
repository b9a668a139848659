#pragma once

#include <QString>

#include <functional>

class QAction;
class QKeySequence;
class QMenu;
class QWidget;

namespace app {

class PlaylistEditor;

/// Adds undo, redo and the orders of the list to the window's menu. `command` adds an item to the menu it is
/// given.
using AddCommand = std::function<QAction*(QMenu& menu, const QString& title, const QKeySequence& keys,
                                          std::function<void()> action)>;
void addEditCommands(QMenu& menu, QWidget& window, PlaylistEditor& editor, const AddCommand& command);

} // namespace app
