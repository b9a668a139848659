#include "app/TextField.h"

#include <QPainter>

#include <cmath>

namespace app {

TextField::TextField(QWidget* parent) : QLabel(parent) {
    setTextFormat(Qt::PlainText);
    QFont roboto(QStringLiteral("Roboto"));
    roboto.setPixelSize(12);
    setFont(roboto);
}

void TextField::setStringValue(const QString& string) {
    if (string == text()) return;
    setText(string);
    setAccessibleDescription(string); // the name says what kind of text it is
    updateToolTip();
}

void TextField::setTextColour(const QColor& colour) {
    m_textColour = colour;
    update();
}

void TextField::setFontSize(double size) {
    QFont changed = font();
    changed.setPixelSize(static_cast<int>(std::lround(size)));
    setFont(changed);
}

void TextField::setBold(bool bold) {
    QFont changed = font();
    changed.setBold(bold);
    setFont(changed);
}

void TextField::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setPen(m_textColour);
    painter.drawText(rect(), static_cast<int>(alignment()) | Qt::TextSingleLine,
                     fontMetrics().elidedText(text(), Qt::ElideRight, width()));
}

void TextField::resizeEvent(QResizeEvent* event) {
    QLabel::resizeEvent(event);
    updateToolTip();
}

void TextField::updateToolTip() {
    const bool fits = fontMetrics().horizontalAdvance(text()) <= width();
    // A tool tip guesses whether its text is rich; this one leaves no doubt.
    setToolTip(fits ? QString() : QStringLiteral("<qt>%1</qt>").arg(text().toHtmlEscaped()));
}

} // namespace app
