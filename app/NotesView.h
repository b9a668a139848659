#pragma once

#include <QTextBrowser>

namespace app {

/// A read-only text. Keys scroll it, except Left and Right, which turn pages.
class NotesView : public QTextBrowser {
    Q_OBJECT
public:
    using QTextBrowser::QTextBrowser;

protected:
    void keyPressEvent(QKeyEvent* event) override;
};

} // namespace app
