#pragma once

#include "controls/AttributedString.h"
#include "platform/cocoa/Image.h"
#include "platform/cocoa/TextFieldCell.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

/// One row of the playlist: number, title over a second line, length, and a play icon in the current entry's
/// row or a mark in that of one which does not play. It keeps no reference to the playlist: the page fills
/// it, and gives it a background colour, before each row. All rectangles are in points with y growing
/// downward. A text that is absent (nullopt) draws nothing.
///
/// Threads: main thread only.
class PlaylistEntryCell : public cocoa::TextFieldCell {
public:
    using Text = std::optional<QString>;

    /// True for the row of the current entry: its texts are yellow and it shows the play icon.
    bool active() const { return m_active; }
    void setActive(bool active) { m_active = active; }

    /// True for a row that does not play: it shows a mark, and its second line, which says why, is red.
    bool failed() const { return m_failed; }
    void setFailed(bool failed) { m_failed = failed; }

    /// True for a row that playing stops after: a bar follows its play icon.
    bool stopsAfter() const { return m_stopsAfter; }
    void setStopsAfter(bool stops) { m_stopsAfter = stops; }

    /// Shown with two digits at least; 0 shows nothing.
    std::int64_t trackNumber() const { return m_trackNumber; }
    void setTrackNumber(std::int64_t number) { m_trackNumber = number; }

    /// The title.
    const Text& info1() const { return m_info1; }
    void setInfo1(Text text) { m_info1 = std::move(text); }
    /// The ranges of the title that match a search.
    void setInfo1Marks(std::vector<TextRange> marks) { m_info1Marks = std::move(marks); }

    /// The second line.
    const Text& info2() const { return m_info2; }
    void setInfo2(Text text) { m_info2 = std::move(text); }
    void setInfo2Marks(std::vector<TextRange> marks) { m_info2Marks = std::move(marks); }

    const cocoa::Image& playIcon() const { return m_playIcon; }
    void setPlayIcon(const cocoa::Image& icon) { m_playIcon = icon; }

    const Text& lengthInfo() const { return m_lengthInfo; }
    void setLengthInfo(Text text) { m_lengthInfo = std::move(text); }

    QColor getTextColour() const;
    std::optional<AttributedString> attributedInfo1Value() const;
    std::optional<AttributedString> attributedInfo2Value() const;
    std::optional<AttributedString> attributedTrackNumberValue() const;
    std::optional<AttributedString> attributedLengthInfoValue() const;

    /// Where each element stands in a row of this frame. A text is cut at the frame's right edge, the title
    /// where its mark or its length begins, and never in height. A number of four digits and more moves title
    /// and second line.
    QRectF trackNumberRectForBounds(const QRectF& frame) const;
    QRectF info1RectForBounds(const QRectF& frame) const;
    QRectF info2RectForBounds(const QRectF& frame) const;
    QRectF lengthInfoRectForBounds(const QRectF& frame) const;
    QRectF playIconRectForBounds(const QRectF& frame) const;
    QRectF stopMarkRectForBounds(const QRectF& frame) const;
    QRectF failureMarkRectForBounds(const QRectF& frame) const;
    /// Directly below the frame, from the view's left edge.
    QRectF lineRectForBounds(const QRectF& frame) const;

    void drawInteriorWithFrame(QPainter& painter, const QRectF& frame) override;

    /// Title, second line and length.
    QString accessibilityLabel() const override;

    /// Lines of plain text: those of title and second line that do not fit into this frame, and why the row
    /// does not play.
    QString toolTip(const QRectF& frame) const;

    /// The copy shares the images and carries everything else.
    std::unique_ptr<PlaylistEntryCell> copyWithZone() const;

private:
    QRectF infoRect(const QRectF& frame, double top, const std::optional<AttributedString>& text) const;
    double titleRoom(const QRectF& frame) const;
    void drawFailureMark(QPainter& painter, const QRectF& frame) const;

    bool m_active = false;
    bool m_failed = false;
    bool m_stopsAfter = false;
    std::int64_t m_trackNumber = 0;
    Text m_info1;
    std::vector<TextRange> m_info1Marks;
    Text m_info2;
    std::vector<TextRange> m_info2Marks;
    cocoa::Image m_playIcon;
    Text m_lengthInfo;
};
