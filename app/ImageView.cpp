#include "app/ImageView.h"

#include "platform/cocoa/Scale.h"

#include <utility>

namespace app {

void ImageView::setImage(cocoa::Image image) {
    m_image = std::move(image);
    update();
}

void ImageView::paintEvent(QPaintEvent*) {
    cocoa::DesignPainter painter(this);
    m_image.drawAtPoint(painter, {0, 0});
}

} // namespace app
