#pragma once

#include "platform/cocoa/Image.h"
#include "platform/cocoa/Nib.h"

#include <QWidget>

/// Shows one image at its own size on a see-through ground, from the view's lower left corner. After its
/// first drawing it makes the window manager update the window's shadow to the image's shape.
///
/// Threads: main thread only.
class ImageBasedView : public QWidget, public cocoa::NibAwaking {
    Q_OBJECT

public:
    explicit ImageBasedView(QWidget* parent = nullptr) : QWidget(parent) {}

    /// Takes the image that the layout names in the string property "viewImage". Where the layout also says
    /// which part of it may be stretched ("stretchedFrom" and "stretchedTo", in points from its top), the
    /// image is always as high as the view.
    void awakeFromNib() override;

    const cocoa::Image& viewImage() const { return m_viewImage; }
    void setViewImage(const cocoa::Image& image) { m_viewImage = image; }

    /// True when the next drawing will renew the window's shadow.
    [[nodiscard]] bool repaint() const { return m_repaint; }
    void setRepaint(bool repaint) { m_repaint = repaint; }

    /// Where an image of this size stands in a view of this height (y grows downward).
    static QRectF imageRect(double viewHeight, const QSizeF& imageSize);

    void drawRect(QPainter& painter);

    QSize sizeHint() const override { return m_viewImage.size().toSize(); }

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    Q_INVOKABLE void renewShadow();
    void stretchImage();

    cocoa::Image m_viewImage;
    bool m_repaint = false;
};
