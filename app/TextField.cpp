#include "app/TextField.h"

#include "platform/cocoa/Scale.h"

#include <QMouseEvent>
#include <QPainter>

#include <chrono>
#include <utility>

namespace app {
namespace {

constexpr std::chrono::milliseconds briefly{1500};

} // namespace

TextField::TextField(QWidget* parent) : QLabel(parent) {
    setTextFormat(Qt::PlainText);
    setFont(QFont(QStringLiteral("Roboto")));
    setFontSize(m_fontSize);
    connect(&cocoa::Scale::shared(), &cocoa::Scale::changed, this, [this] { setFontSize(m_fontSize); });
    m_brief.setSingleShot(true);
    m_brief.callOnTimeout([this] { setStringValue(m_own); });
}

void TextField::setStringValue(const QString& string) {
    if (string == text()) return;
    setText(string);
    setAccessibleDescription(string); // the name says what kind of text it is
    updateToolTip();
}

void TextField::showBriefly(const QString& string) {
    if (!m_brief.isActive()) m_own = text();
    m_brief.start(briefly);
    setStringValue(string);
}

void TextField::setAction(std::function<void()> action) {
    m_action = std::move(action);
    setCursor(Qt::PointingHandCursor);
}

/// Accepts the press, so that it does not move the window.
void TextField::mousePressEvent(QMouseEvent* event) {
    event->setAccepted(m_action && event->button() == Qt::LeftButton);
}

void TextField::mouseReleaseEvent(QMouseEvent* event) {
    if (m_action && event->button() == Qt::LeftButton && rect().contains(event->position().toPoint()))
        m_action();
}

void TextField::setTextColour(const QColor& colour) {
    m_textColour = colour;
    update();
}

void TextField::setFontSize(double size) {
    m_fontSize = size;
    QFont changed = font();
    changed.setPixelSize(cocoa::scaledToInt(size));
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
    // QToolTip guesses whether a text is rich: make it explicit.
    setToolTip(fits ? QString() : QStringLiteral("<qt>%1</qt>").arg(text().toHtmlEscaped()));
}

} // namespace app
