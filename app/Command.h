#pragma once

#include <QAction>
#include <QKeySequence>
#include <QString>

#include <functional>
#include <optional>
#include <vector>

namespace app {

/// A user command in the menu or on a key. One table of commands defines the menu, its shortcuts, and the
/// list of keys.
struct Command {
    enum class Place { menu, keyOnly };

    QString title = {}; ///< Empty for a separator.
    std::optional<QKeySequence> key = {};
    std::function<void()> action = {};
    QString submenu = {}; ///< Path of submenu titles, separated by "/".
    Place place = Place::menu;
    bool repeats = false;            ///< Repeats while the key is held.
    std::function<bool()> isOn = {}; ///< State of a checkable command.
    std::function<bool()> isEnabled =
        {}; ///< Evaluated when the menu opens. Keys bypass it: the action must check it, too.
    std::function<QString()> titleNow = {}; ///< Current title, instead of `title`.
    QAction* item = nullptr;                ///< An existing item, instead of title, key and action.

    [[nodiscard]] bool isSeparator() const { return title.isEmpty() && !item; }
};

using Commands = std::vector<Command>;

} // namespace app
