#include "platform/cocoa/ComboBoxCell.h"

#include <QStyle>
#include <QStyleOptionComboBox>

namespace cocoa {
namespace {

QStyleOptionComboBox styleOption(const QWidget& view, const QRectF& frame) {
    QStyleOptionComboBox option;
    option.initFrom(&view);
    option.rect = frame.toAlignedRect();
    option.editable = true;
    option.subControls = QStyle::SC_All;
    return option;
}

} // namespace

void ComboBoxCell::drawWithFrame(QPainter& painter, const QRectF& frame) {
    const QWidget* view = controlView();
    if (view == nullptr) return;
    const QStyleOptionComboBox option = styleOption(*view, frame);
    view->style()->drawComplexControl(QStyle::CC_ComboBox, &option, &painter, view);
}

QRectF ComboBoxCell::textRectForFrame(const QRectF& frame) const {
    const QWidget* view = controlView();
    if (view == nullptr) return frame;
    const QStyleOptionComboBox option = styleOption(*view, frame);
    return view->style()->subControlRect(QStyle::CC_ComboBox, &option, QStyle::SC_ComboBoxEditField, view);
}

} // namespace cocoa
