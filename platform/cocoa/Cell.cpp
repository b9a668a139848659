#include "platform/cocoa/Cell.h"

namespace cocoa {

void Cell::setControlSize(ControlSize size) {
    m_controlSize = size;
    if (m_controlView == nullptr) return;
    m_controlView->updateGeometry();
    m_controlView->update();
}

} // namespace cocoa
