#include "controls/PlaylistEntryCell.h"

#include "controls/Colours.h"

#include <QFontDatabase>
#include <QPainter>
#include <QStringList>

#include <algorithm>
#include <cmath>

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

constexpr double numberLeft = 14.0;
constexpr double infoLeft = 34.0;
/// Larger numbers move the other texts.
constexpr std::int64_t maxShortNumber = 999;
/// Between a text and what it must not touch.
constexpr double textGap = 6.0;

std::optional<AttributedString> attributed(const PlaylistEntryCell::Text& text, const QColor& colour,
                                           const QFont& font, const std::vector<TextRange>& marks = {}) {
    if (!text) return std::nullopt;
    return AttributedString{*text, colour, font, marks};
}

QRectF textRect(const QRectF& frame, const QPointF& origin, const std::optional<AttributedString>& text) {
    const QSizeF size = text ? text->size() : QSizeF(0.0, 0.0);
    const double room = std::max(0.0, frame.x() + frame.width() - origin.x());
    return {origin, QSizeF(std::min(size.width(), room), size.height())};
}

} // namespace

QColor PlaylistEntryCell::getTextColour() const {
    if (m_active) return colours::yellow();
    return m_failed ? colours::grey() : colours::blue();
}

std::optional<AttributedString> PlaylistEntryCell::attributedInfo1Value() const {
    return attributed(m_info1, getTextColour(), titleFont(), m_info1Marks);
}

std::optional<AttributedString> PlaylistEntryCell::attributedInfo2Value() const {
    return attributed(m_info2, m_failed ? colours::red() : getTextColour(), textFont(), m_info2Marks);
}

std::optional<AttributedString> PlaylistEntryCell::attributedTrackNumberValue() const {
    if (m_trackNumber == 0) return std::nullopt;
    return attributed(QString::asprintf("%02lld", static_cast<long long>(m_trackNumber)), getTextColour(),
                      textFont());
}

std::optional<AttributedString> PlaylistEntryCell::attributedLengthInfoValue() const {
    return attributed(m_lengthInfo, getTextColour(), textFont());
}

QRectF PlaylistEntryCell::trackNumberRectForBounds(const QRectF& frame) const {
    return textRect(frame, frame.topLeft() + QPointF(numberLeft, 13.0), attributedTrackNumberValue());
}

QRectF PlaylistEntryCell::info1RectForBounds(const QRectF& frame) const {
    QRectF rect = infoRect(frame, 10.0, attributedInfo1Value());
    rect.setRight(std::clamp(titleRoom(frame), rect.left(), rect.right()));
    return rect;
}

QRectF PlaylistEntryCell::info2RectForBounds(const QRectF& frame) const {
    return infoRect(frame, 30.0, attributedInfo2Value());
}

QRectF PlaylistEntryCell::infoRect(const QRectF& frame, double top,
                                   const std::optional<AttributedString>& text) const {
    double left = infoLeft;
    if (m_trackNumber > maxShortNumber)
        left = std::ceil(trackNumberRectForBounds(frame).right() - frame.x() + textGap);
    return textRect(frame, frame.topLeft() + QPointF(left, top), text);
}

/// Where the title must end.
double PlaylistEntryCell::titleRoom(const QRectF& frame) const {
    if (m_failed) return failureMarkRectForBounds(frame).left() - textGap;
    if (m_active) return playIconRectForBounds(frame).left() - textGap;
    const QRectF length = lengthInfoRectForBounds(frame);
    return length.isEmpty() ? frame.right() : length.left() - textGap;
}

QRectF PlaylistEntryCell::lengthInfoRectForBounds(const QRectF& frame) const {
    return textRect(frame, frame.topLeft() + QPointF(frame.width() - 40.0, 10.0),
                    attributedLengthInfoValue());
}

QRectF PlaylistEntryCell::playIconRectForBounds(const QRectF& frame) const {
    return {frame.x() + frame.width() - 53.0, frame.y() + 13.0, 6.0, 8.0};
}

QRectF PlaylistEntryCell::stopMarkRectForBounds(const QRectF& frame) const {
    return {frame.x() + frame.width() - 46.0, frame.y() + 13.0, 2.0, 8.0};
}

QRectF PlaylistEntryCell::failureMarkRectForBounds(const QRectF& frame) const {
    return {frame.x() + frame.width() - 54.0, frame.y() + 11.5, 10.0, 10.0};
}

QRectF PlaylistEntryCell::lineRectForBounds(const QRectF& frame) const {
    return {0.0, frame.y() + frame.height(), frame.width() + 5.0, 1.0};
}

void PlaylistEntryCell::drawInteriorWithFrame(QPainter& painter, const QRectF& frame) {
    // The edges of the row fall on pixels.
    painter.setRenderHint(QPainter::Antialiasing, false);
    if (backgroundColor().isValid()) painter.fillRect(frame, backgroundColor());
    painter.setRenderHint(QPainter::Antialiasing);
    if (m_failed)
        drawFailureMark(painter, frame);
    else if (m_active)
        m_playIcon.drawInRect(painter, playIconRectForBounds(frame));
    if (m_stopsAfter && !m_failed) painter.fillRect(stopMarkRectForBounds(frame), getTextColour());

    const auto draw = [&](const std::optional<AttributedString>& text, const QRectF& rect) {
        if (text && !text->text.isEmpty()) text->drawInRect(painter, rect);
    };
    draw(attributedTrackNumberValue(), trackNumberRectForBounds(frame));
    draw(attributedInfo1Value(), info1RectForBounds(frame));
    draw(attributedInfo2Value(), info2RectForBounds(frame));
    draw(attributedLengthInfoValue(), lengthInfoRectForBounds(frame));

    painter.setRenderHint(QPainter::Antialiasing, false);
    painter.fillRect(lineRectForBounds(frame), colours::blue());
}

/// A circle with a stroke through it.
void PlaylistEntryCell::drawFailureMark(QPainter& painter, const QRectF& frame) const {
    const QRectF circle = failureMarkRectForBounds(frame).adjusted(0.5, 0.5, -0.5, -0.5);
    const QPointF reach(3.0, -3.0);
    painter.setPen(QPen(colours::red(), 1.3));
    painter.setBrush(Qt::NoBrush);
    painter.drawEllipse(circle);
    painter.drawLine(circle.center() - reach, circle.center() + reach);
}

QString PlaylistEntryCell::accessibilityLabel() const {
    QStringList parts;
    for (const Text& text : {m_info1, m_info2, m_lengthInfo})
        if (text && !text->isEmpty()) parts << *text;
    if (m_active) parts << QStringLiteral("playing");
    if (m_stopsAfter) parts << QStringLiteral("playing stops after it");
    return parts.join(QStringLiteral(", "));
}

QString PlaylistEntryCell::toolTip(const QRectF& frame) const {
    const auto isCut = [](const std::optional<AttributedString>& text, const QRectF& rect) {
        return text && text->size().width() > rect.width();
    };
    QStringList lines;
    if (isCut(attributedInfo1Value(), info1RectForBounds(frame))) lines << *m_info1;
    if (m_info2 && (m_failed || isCut(attributedInfo2Value(), info2RectForBounds(frame)))) lines << *m_info2;
    return lines.join(u'\n');
}

std::unique_ptr<PlaylistEntryCell> PlaylistEntryCell::copyWithZone() const {
    return std::make_unique<PlaylistEntryCell>(*this);
}
