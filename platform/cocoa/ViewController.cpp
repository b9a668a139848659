#include "platform/cocoa/ViewController.h"

#include "platform/cocoa/Nib.h"

#include <memory>

namespace cocoa {

ViewController::~ViewController() {
    const std::unique_ptr<QWidget> owned(m_view);
}

QWidget& ViewController::view() {
    if (m_view == nullptr) {
        auto view = std::make_unique<QWidget>();
        m_view = view.get();
        loadView(*view);
        cocoa::awakeFromNib(*view);
        awakeFromNib();
        view.release(); // m_view owns it, or the widget that it is shown in
    }
    return *m_view;
}

} // namespace cocoa
