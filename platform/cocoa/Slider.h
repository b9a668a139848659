#pragma once

#include "platform/cocoa/SliderCell.h"

#include <QElapsedTimer>
#include <QTimer>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>

namespace cocoa {

/// A horizontal slider that draws through its cell, in points of the design. The user moves it by dragging,
/// by a click (the knob jumps there), by the wheel and by keys: arrows a hundredth of the range, a notch of
/// the wheel a fiftieth, page keys a tenth, Home and End to the ends. While the knob is held, the run loop is
/// tracking (RunLoop). Only Tab gives it the keyboard.
class Slider : public QWidget {
    Q_OBJECT
    Q_PROPERTY(double minValue READ minValue WRITE setMinValue)
    Q_PROPERTY(double maxValue READ maxValue WRITE setMaxValue)
    Q_PROPERTY(double doubleValue READ doubleValue WRITE setDoubleValue)
public:
    explicit Slider(QWidget* parent = nullptr);
    ~Slider() override;

    /// Never null: a plain SliderCell until another is set.
    SliderCell* cell() const { return m_cell.get(); }
    /// Replaces the cell without copying its values. Null is ignored.
    void setCell(std::unique_ptr<SliderCell> cell);

    double minValue() const { return m_cell->minValue(); }
    double maxValue() const { return m_cell->maxValue(); }
    double doubleValue() const { return m_cell->doubleValue(); }
    void setMinValue(double value) { m_cell->setMinValue(value); }
    void setMaxValue(double value) { m_cell->setMaxValue(value); }
    void setDoubleValue(double value);

    /// Arrow keys and wheel notches move by `step` in any range, page keys by six steps.
    void setStep(double step) { m_step = step; }
    /// Dragging snaps to `value` within `distance`.
    void setSnap(double value, double distance) { m_snap = {value, distance}; }
    /// Limits how often the action is called. The last change is always reported, at the latest on release.
    void setActionInterval(std::chrono::milliseconds interval) { m_actionInterval = interval; }
    /// False: a drag calls the action once, on release. The default is true.
    void setContinuous(bool continuous) { m_isContinuous = continuous; }
    /// The value under the pointer is shown in a tool tip, while it rests and while it drags.
    void setShowsValueAtPointer(bool shows) { m_showsValueAtPointer = shows; }

    /// Called on every change that the user makes; never by setDoubleValue.
    void setAction(std::function<void()> action) { m_action = std::move(action); }
    /// The value as a screen reader says it; by default the number.
    void setValueText(std::function<QString(double)> text) { m_valueText = std::move(text); }
    QString valueText() const { return valueTextOf(doubleValue()); }

    /// True while the user holds the knob.
    bool isTracking() const;

    /// Asks for a redraw of a part, in points of the design; every redraw of the slider's own goes through
    /// here.
    virtual void setNeedsDisplayInRect(const QRectF& rect);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

    /// Sets the value as a user would: redraws and calls the action when it changed.
    void moveTo(double value);

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    bool event(QEvent* event) override;
    /// Filters all events of the application while the knob is held.
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    class Tracking;
    QString valueTextOf(double value) const;
    double travel() const;
    double valueAt(double x) const;
    void moveKnobTo(double x);
    void showValueAt(double x);
    void stopTracking();
    void callAction();
    void sendAction();

    std::unique_ptr<SliderCell> m_cell;
    std::unique_ptr<Tracking> m_tracking;
    std::function<void()> m_action;
    std::function<QString(double)> m_valueText;
    std::optional<double> m_step;
    struct Snap {
        double value;
        double distance;
    };
    std::optional<Snap> m_snap;
    std::chrono::milliseconds m_actionInterval{0};
    QElapsedTimer m_sinceAction;
    QTimer m_lateAction; ///< Runs while a change has not been reported.
    bool m_showsValueAtPointer = false;
    bool m_isContinuous = true;
    bool m_actionWaits = false; ///< For the release of the knob.
};

} // namespace cocoa
