#pragma once

#include <QTextBrowser>

namespace app {

/// Text to be read: the keys scroll it, but the sideways ones belong to whoever turns pages.
class NotesView : public QTextBrowser {
    Q_OBJECT
public:
    using QTextBrowser::QTextBrowser;

protected:
    void keyPressEvent(QKeyEvent* event) override;
};

} // namespace app
