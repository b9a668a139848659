#include "app/editing/EditMenu.h"

#include "app/Skin.h"
#include "app/editing/PlaylistEditor.h"

#include <QMenu>
#include <QWidget>

namespace app {

void addEditCommands(QMenu& menu, QWidget& window, PlaylistEditor& editor, const AddCommand& command) {
    for (QAction* const step : {&editor.undoAction(), &editor.redoAction()}) {
        menu.addAction(step);
        window.addAction(step);
    }
    QMenu& orders = *menu.addMenu(QObject::tr("Sort"));
    dressInSkin(orders);
    for (const auto& [title, key] : {std::pair{QObject::tr("By Title"), SortKey::title},
                                     {QObject::tr("By Artist and Album"), SortKey::artistAndAlbum},
                                     {QObject::tr("By File Name"), SortKey::fileName}})
        command(orders, title, {}, [&editor, key = key] { editor.sort(key); });
    orders.addSeparator();
    command(orders, QObject::tr("Reverse"), {}, [&editor] { editor.reverse(); });
    command(orders, QObject::tr("Randomise"), {}, [&editor] { editor.randomise(); });
}

} // namespace app
