#include "platform/cocoa/ViewController.h"

#include "platform/cocoa/Nib.h"

#include <memory>

namespace cocoa {

ViewController::~ViewController() {
    const std::unique_ptr<QWidget> owned(m_view);
}

QWidget& ViewController::view() {
    if (m_view == nullptr) {
        m_view = std::make_unique<QWidget>().release(); // this object's, or the widget's that it is shown in
        loadView(*m_view);
        cocoa::awakeFromNib(*m_view);
        awakeFromNib();
    }
    return *m_view;
}

} // namespace cocoa
