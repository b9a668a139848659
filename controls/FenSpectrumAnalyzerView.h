#pragma once

#include <QRectF>
#include <QWidget>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

class QPainter;

/// The spectrum as a row of thin bars that stand on the view's bottom edge. It paints no background.
///
/// Threads: main thread only.
class FenSpectrumAnalyzerView : public QWidget {
    Q_OBJECT

public:
    /// One height in points per bar; the count of bars is the count of elements.
    using Values = std::vector<std::int32_t>;

    explicit FenSpectrumAnalyzerView(QWidget* parent = nullptr);

    /// No values (the start) draw nothing. Setting them asks for no redraw: the caller does, with update().
    const std::optional<Values>& spectrumValues() const { return m_spectrumValues; }
    void setSpectrumValues(std::optional<Values> values) { m_spectrumValues = std::move(values); }

    /// Called when the view becomes visible or hidden, also by minimising the window.
    void setOnSight(std::function<void(bool seen)> onSight) { m_onSight = std::move(onSight); }

    /// False: always redraws the whole view.
    bool wantsDefaultClipping() const { return false; }

    /// Bar `index` of height `value` on the bottom edge of the rectangle `redrawn`; y grows downward.
    static QRectF barRect(std::size_t index, std::int32_t value, const QRectF& redrawn);

    /// Draws the bars on the bottom edge of `redrawn`.
    void drawRect(QPainter& painter, const QRectF& redrawn) const;

    QSize sizeHint() const override { return {45, 25}; }

protected:
    void paintEvent(QPaintEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    std::optional<Values> m_spectrumValues;
    std::function<void(bool)> m_onSight;
};
