#pragma once

#include <QObject>
#include <QSizeF>
#include <QTimer>

class CustomWindow;
namespace cocoa {
class UserDefaults;
}

namespace app {

/// The main window's size: as wide as its design, as tall as the user last made it, and never larger than the
/// part of the screen that panels leave free. The height is kept in the user defaults.
///
/// Threads: main thread only; both must outlive it.
class WindowSize : public QObject {
    Q_OBJECT
public:
    WindowSize(CustomWindow& window, cocoa::UserDefaults& defaults);
    ~WindowSize() override;

    /// In points of the design: the controls, two rows, the selector.
    static QSizeF minDesignSize();

    /// Lets the list show that many rows more, or fewer.
    void growByRows(int rows);

    /// What the user has chosen, if it is not stored yet.
    void store();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void watchScreen();
    void fit();
    void resize(const QSize& size);
    void noteHeight();

    CustomWindow& m_window;
    cocoa::UserDefaults& m_defaults;
    int m_height;             ///< In points of the design.
    int m_givenHeight = 0;    ///< What `fit` made of it; any other is the user's.
    bool m_isChanged = false; ///< Since it was stored.
    QTimer m_storeSoon;
    QMetaObject::Connection m_screen;
};

} // namespace app
