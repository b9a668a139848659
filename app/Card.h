#pragma once

#include <QFrame>
#include <QPointer>
#include <QWidget>

#include <memory>

namespace app {

/// A card over a widget of the window, which it dims: a title, a content that scrolls, a button to close it.
/// It is a child of the window and no dialog, so keys and the rest of the window go on working. A click
/// beside it, Escape, or hiding it closes it; the keyboard goes back to where it was.
class Card : public QWidget {
    Q_OBJECT
public:
    Card(const QString& title, std::unique_ptr<QWidget> content, QWidget& covered);

    void open();

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;
    /// Tab stays on the card.
    bool focusNextPrevChild(bool next) override;

private:
    void cover();

    QWidget& m_covered;
    QPointer<QWidget> m_hadFocus;
    bool m_holdsControls = false;
    QWidget* m_close = nullptr;
    QLayout* m_frameLayout = nullptr;
};

} // namespace app
