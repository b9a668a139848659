#include "platform/cocoa/RunLoop.h"

#include <QApplication>

namespace cocoa {
namespace {
int modesHeld = 0;
}

RunLoop::Mode::Mode() {
    ++modesHeld;
}

RunLoop::Mode::~Mode() {
    --modesHeld;
}

bool RunLoop::isInDefaultMode() {
    return modesHeld == 0 && QApplication::activePopupWidget() == nullptr;
}

} // namespace cocoa
