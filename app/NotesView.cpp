#include "app/NotesView.h"

#include <QKeyEvent>

namespace app {

void NotesView::keyPressEvent(QKeyEvent* event) {
    const bool sideways = event->key() == Qt::Key_Left || event->key() == Qt::Key_Right;
    sideways ? event->ignore() : QTextBrowser::keyPressEvent(event);
}

} // namespace app
