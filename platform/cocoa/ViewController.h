#pragma once

#include <QPointer>
#include <QWidget>

namespace cocoa {

/// A page whose view is loaded from its layout on first use. Main thread only.
class ViewController {
public:
    ViewController() = default;
    virtual ~ViewController();
    ViewController(const ViewController&) = delete;
    ViewController& operator=(const ViewController&) = delete;

    /// The page's view, loaded at the first call: loadView, then awakeFromNib of the widgets in it and of
    /// this. It may be shown inside another widget, and then goes with whichever of the two ends first.
    QWidget& view();
    bool isViewLoaded() const { return m_view != nullptr; }

protected:
    /// Builds the layout in `view` (setupUi of the layout's class) and connects its outlets.
    virtual void loadView(QWidget& view) = 0;
    virtual void awakeFromNib() {}

private:
    QPointer<QWidget> m_view;
};

} // namespace cocoa
