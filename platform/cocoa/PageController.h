#pragma once

#include "platform/cocoa/PageControllerDelegate.h"

#include <QPointer>
#include <QStringList>
#include <QVariantAnimation>
#include <QWidget>

#include <vector>

namespace cocoa {

class ViewController;

/// Shows one of several pages, each in the whole widget. The user turns them, with a short slide, by a
/// sideways swipe (or wheel), by Left and Right, Alt+Left and Alt+Right, or through turnToPage. A page's view
/// is loaded when it is first turned to.
class PageController : public QWidget {
    Q_OBJECT
public:
    explicit PageController(QWidget* parent = nullptr);
    /// Detaches the pages' views.
    ~PageController() override;

    /// Not owned; must be set before the arranged objects.
    void setDelegate(PageControllerDelegate* delegate) { m_delegate = delegate; }
    /// One object per page, in order; shows the first page at once, without a transition.
    void setArrangedObjects(const QStringList& objects);
    const QStringList& arrangedObjects() const { return m_objects; }

    /// -1 while there are no pages.
    int selectedIndex() const { return m_selected; }
    /// The page that is shown or being turned to; null for none.
    ViewController* selectedViewController() const { return m_controller; }

    /// Turns to a page with a slide, and notifies the delegate. Ignores the selected page and invalid
    /// indexes.
    void turnToPage(int index);
    void turnForward() { turnToPage(m_selected + 1); }
    void turnBack() { turnToPage(m_selected - 1); }

    /// Ends the transition: shows the selected page at its final position and removes the previous one.
    void completeTransition();

protected:
    void resizeEvent(QResizeEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    ViewController* controllerAt(int index) const;
    void slide(double progress);
    void endTransition();

    PageControllerDelegate* m_delegate = nullptr;
    QStringList m_objects;
    int m_selected = -1;
    ViewController* m_controller = nullptr;

    QVariantAnimation m_animation;
    QPointer<QWidget> m_leaving; ///< The view that slides out; null outside a transition.
    int m_direction = 1;         ///< 1: the new page comes from the right.

    double m_swiped = 0; ///< Distance of the current swipe in eighths of a degree; right is positive.
    bool m_swipeDone = false;
    qint64 m_lastSwipe = 0; ///< Milliseconds; a pause begins a new swipe.
};

} // namespace cocoa
