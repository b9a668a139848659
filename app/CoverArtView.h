#pragma once

#include "platform/cocoa/Image.h"

#include <QWidget>

namespace app {

/// Shows a picture as large as the view allows, with its aspect ratio, over a blurred and darkened copy.
class CoverArtView : public QWidget {
    Q_OBJECT
public:
    using QWidget::QWidget;

    const cocoa::Image& image() const { return m_image; }
    void setImage(cocoa::Image image);

    /// The rectangle of a picture of this size in a view of this size.
    static QRectF pictureRect(const QSizeF& view, const QSizeF& picture);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    cocoa::Image m_image;
    QPixmap m_backdrop; ///< A few pixels, stretched to a blur.
};

} // namespace app
