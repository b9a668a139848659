#pragma once

#include "platform/cocoa/Image.h"

#include <QWidget>

namespace app {

/// Shows one picture at its own size from the top-left corner.
class ImageView : public QWidget {
    Q_OBJECT
public:
    using QWidget::QWidget;

    const cocoa::Image& image() const { return m_image; }
    void setImage(cocoa::Image image);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    cocoa::Image m_image;
};

} // namespace app
