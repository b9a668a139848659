#pragma once

#include "platform/cocoa/Image.h"

#include <QAbstractButton>

namespace app {

/// A button that draws only its picture; without one it is transparent. Hovering shows the hover picture, or
/// brightens the picture; pressing dims it; focus draws a ring. Enter clicks it like Space.
class ImageButton : public QAbstractButton {
    Q_OBJECT
    /// Names of the pictures, for layout files.
    Q_PROPERTY(QString imageName READ imageName WRITE setImageName)
    Q_PROPERTY(bool round MEMBER m_round)
public:
    explicit ImageButton(QWidget* parent = nullptr);

    const cocoa::Image& image() const { return m_image; }
    void setImage(cocoa::Image image);

    const QString& imageName() const { return m_imageName; }
    /// Also takes the picture named with "_hover" behind it, where there is one.
    void setImageName(const QString& name);

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void enterEvent(QEnterEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    QRectF centred(const cocoa::Image& image) const;

    QString m_imageName;
    cocoa::Image m_image;
    cocoa::Image m_hoverImage;
    bool m_round = false;
};

} // namespace app
