#pragma once

#include <QAction>
#include <QKeySequence>
#include <QString>

#include <functional>
#include <optional>
#include <vector>

namespace app {

/// What the user can have done by the menu or a key. One table of these makes the menu, its shortcuts, and
/// the list of keys.
struct Command {
    enum class Place { menu, keyOnly };

    QString title = {}; ///< Empty: a line between two groups of the menu.
    std::optional<QKeySequence> key = {};
    std::function<void()> action = {};
    QString submenu = {}; ///< The titles of the menus within the menu that lead to it, with "/" between them.
    Place place = Place::menu;
    bool repeats = false;                   ///< While the key is held; else one press is one command.
    std::function<bool()> isOn = {};        ///< Of a command that switches something.
    std::function<bool()> isEnabled = {};   ///< Asked when the menu opens; the action must bear it, too.
    std::function<QString()> titleNow = {}; ///< In the place of a title that changes.
    QAction* item = nullptr;                ///< Made elsewhere, in the place of title, key and action.

    [[nodiscard]] bool isSeparator() const { return title.isEmpty() && !item; }
};

using Commands = std::vector<Command>;

} // namespace app
