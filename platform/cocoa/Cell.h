#pragma once

#include <QPointer>
#include <QWidget>

namespace cocoa {

/// The three sizes in which controls come; mini is the smallest.
enum class ControlSize { regular = 0, small = 1, mini = 2 };

/// Draws a control's content on behalf of its widget. One cell may draw several places, such as a table's
/// rows. Main thread only.
class Cell {
public:
    Cell() = default;
    virtual ~Cell() = default;
    Cell& operator=(const Cell&) = delete;

    /// The widget that the cell draws in, or null. Not owned.
    QWidget* controlView() const { return m_controlView; }
    void setControlView(QWidget* view) { m_controlView = view; }

    ControlSize controlSize() const { return m_controlSize; }
    void setControlSize(ControlSize size);

protected:
    Cell(const Cell&) = default;

private:
    QPointer<QWidget> m_controlView;
    ControlSize m_controlSize = ControlSize::regular;
};

} // namespace cocoa
