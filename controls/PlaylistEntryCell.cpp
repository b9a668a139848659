#include "controls/PlaylistEntryCell.h"

#include "controls/Colours.h"

#include <QFontDatabase>
#include <QPainter>
#include <QStringList>

#include <algorithm>

namespace {

/// Roboto at a size in points (device-independent pixels), or the platform's default font where it is
/// missing. Letters that Roboto lacks come from other fonts, one by one.
QFont roboto(int size, QFont::Weight weight) {
    static const bool installed = QFontDatabase::hasFamily(QStringLiteral("Roboto"));
    if (!installed) return {};
    QFont font(QStringLiteral("Roboto"));
    font.setPixelSize(size);
    font.setWeight(weight);
    return font;
}

QFont titleFont() {
    return roboto(12, QFont::Bold);
}
QFont textFont() {
    return roboto(10, QFont::Normal);
}

QRectF textRect(const QRectF& frame, const QPointF& origin, const std::optional<AttributedString>& text) {
    const QSizeF size = text ? text->size() : QSizeF(0.0, 0.0);
    const double room = std::max(0.0, frame.x() + frame.width() - origin.x());
    return {origin, QSizeF(std::min(size.width(), room), size.height())};
}

} // namespace

QColor PlaylistEntryCell::getTextColour() const {
    return m_active ? colours::yellow() : colours::blue();
}

std::optional<AttributedString> PlaylistEntryCell::attributed(const Text& text, const QFont& font) const {
    if (!text) return std::nullopt;
    return AttributedString{*text, getTextColour(), font};
}

std::optional<AttributedString> PlaylistEntryCell::attributedInfo1Value() const {
    return attributed(m_info1, titleFont());
}

std::optional<AttributedString> PlaylistEntryCell::attributedInfo2Value() const {
    return attributed(m_info2, textFont());
}

std::optional<AttributedString> PlaylistEntryCell::attributedTrackNumberValue() const {
    if (m_trackNumber == 0) return std::nullopt;
    return attributed(QString::asprintf("%02lld", static_cast<long long>(m_trackNumber)), textFont());
}

std::optional<AttributedString> PlaylistEntryCell::attributedLengthInfoValue() const {
    return attributed(m_lengthInfo, textFont());
}

QRectF PlaylistEntryCell::trackNumberRectForBounds(const QRectF& frame) const {
    return textRect(frame, frame.topLeft() + QPointF(14.0, 13.0), attributedTrackNumberValue());
}

QRectF PlaylistEntryCell::info1RectForBounds(const QRectF& frame) const {
    return textRect(frame, frame.topLeft() + QPointF(34.0, 10.0), attributedInfo1Value());
}

QRectF PlaylistEntryCell::info2RectForBounds(const QRectF& frame) const {
    return textRect(frame, frame.topLeft() + QPointF(34.0, 30.0), attributedInfo2Value());
}

QRectF PlaylistEntryCell::lengthInfoRectForBounds(const QRectF& frame) const {
    return textRect(frame, frame.topLeft() + QPointF(frame.width() - 40.0, 10.0),
                    attributedLengthInfoValue());
}

QRectF PlaylistEntryCell::playIconRectForBounds(const QRectF& frame) const {
    return {frame.x() + frame.width() - 53.0, frame.y() + 13.0, 6.0, 8.0};
}

QRectF PlaylistEntryCell::lineRectForBounds(const QRectF& frame) const {
    return {0.0, frame.y() + frame.height(), frame.width() + 5.0, 1.0};
}

void PlaylistEntryCell::drawInteriorWithFrame(QPainter& painter, const QRectF& frame) {
    if (backgroundColor().isValid()) painter.fillRect(frame, backgroundColor());
    if (m_active) m_playIcon.drawInRect(painter, playIconRectForBounds(frame));

    const auto draw = [&](const std::optional<AttributedString>& text, const QRectF& rect) {
        if (text && !text->text.isEmpty()) text->drawInRect(painter, rect);
    };
    draw(attributedTrackNumberValue(), trackNumberRectForBounds(frame));
    draw(attributedInfo1Value(), info1RectForBounds(frame));
    draw(attributedInfo2Value(), info2RectForBounds(frame));
    draw(attributedLengthInfoValue(), lengthInfoRectForBounds(frame));

    painter.fillRect(lineRectForBounds(frame), colours::blue());
}

QString PlaylistEntryCell::accessibilityLabel() const {
    QStringList parts;
    for (const Text& text : {m_info1, m_info2, m_lengthInfo})
        if (text && !text->isEmpty()) parts << *text;
    return parts.join(QStringLiteral(", "));
}

std::unique_ptr<PlaylistEntryCell> PlaylistEntryCell::copyWithZone() const {
    return std::make_unique<PlaylistEntryCell>(*this);
}
