#include "platform/cocoa/Accessibility.h"

#include "platform/cocoa/Slider.h"
#include "platform/cocoa/TableView.h"
#include "platform/cocoa/Window.h"

#include <QAccessible>
#include <QAccessibleWidget>

#include <map>

namespace cocoa {
namespace {

class AccessibleSlider : public QAccessibleWidget, public QAccessibleValueInterface {
public:
    explicit AccessibleSlider(Slider& slider)
        : QAccessibleWidget(&slider, QAccessible::Slider), m_slider(slider) {}

    void* interface_cast(QAccessible::InterfaceType type) override {
        if (type == QAccessible::ValueInterface) return static_cast<QAccessibleValueInterface*>(this);
        return QAccessibleWidget::interface_cast(type);
    }
    QString text(QAccessible::Text kind) const override {
        return kind == QAccessible::Value ? m_slider.valueText() : QAccessibleWidget::text(kind);
    }
    QVariant currentValue() const override { return m_slider.doubleValue(); }
    void setCurrentValue(const QVariant& value) override { m_slider.moveTo(value.toDouble()); }
    QVariant maximumValue() const override { return m_slider.maxValue(); }
    QVariant minimumValue() const override { return m_slider.minValue(); }
    QVariant minimumStepSize() const override { return (m_slider.maxValue() - m_slider.minValue()) / 100; }

private:
    Slider& m_slider;
};

/// One row, read from the table when it is asked. Its action is the double click's.
class AccessibleRow : public QAccessibleInterface, public QAccessibleActionInterface {
public:
    AccessibleRow(TableView& table, int row) : m_table(table), m_row(row) {}

    void* interface_cast(QAccessible::InterfaceType type) override {
        return type == QAccessible::ActionInterface ? static_cast<QAccessibleActionInterface*>(this)
                                                    : nullptr;
    }
    QStringList actionNames() const override { return {pressAction()}; }
    void doAction(const QString& name) override {
        if (name == pressAction() && isValid()) m_table.performDoubleAction(m_row);
    }
    QStringList keyBindingsForAction(const QString&) const override { return {QStringLiteral("Return")}; }
    bool isValid() const override { return m_row < m_table.numberOfRows(); }
    QObject* object() const override { return nullptr; }
    QAccessibleInterface* parent() const override { return QAccessible::queryAccessibleInterface(&m_table); }
    QAccessibleInterface* child(int) const override { return nullptr; }
    QAccessibleInterface* childAt(int, int) const override { return nullptr; }
    int childCount() const override { return 0; }
    int indexOfChild(const QAccessibleInterface*) const override { return -1; }
    QAccessible::Role role() const override { return QAccessible::ListItem; }
    QString text(QAccessible::Text kind) const override {
        if (kind != QAccessible::Name || !isValid()) return {};
        return m_table.preparedCell(m_row).accessibilityLabel();
    }
    void setText(QAccessible::Text, const QString&) override {}
    QRect rect() const override {
        const QRect inViewport = m_table.rectOfRow(m_row).toAlignedRect();
        return {m_table.viewport()->mapToGlobal(inViewport.topLeft()), inViewport.size()};
    }
    QAccessible::State state() const override {
        QAccessible::State state;
        state.selectable = state.focusable = true;
        state.selected = m_table.selectedRowIndexes().contains(m_row);
        state.focused = m_table.hasFocus() && m_table.currentRow() == m_row;
        state.invalid = !isValid();
        state.invisible = m_table.isRowHidden(m_row);
        return state;
    }

    int row() const { return m_row; }

private:
    TableView& m_table;
    int m_row;
};

/// A list whose rows are made when a screen reader asks for them.
class AccessibleTable : public QAccessibleWidget {
public:
    explicit AccessibleTable(TableView& table)
        : QAccessibleWidget(&table, QAccessible::List), m_table(table) {}
    ~AccessibleTable() override {
        for (const auto& [row, id] : m_rows)
            QAccessible::deleteAccessibleInterface(id);
    }

    int childCount() const override { return m_table.numberOfRows(); }
    QAccessibleInterface* child(int row) const override {
        if (row < 0 || row >= m_table.numberOfRows()) return nullptr;
        const auto found = m_rows.find(row);
        if (found != m_rows.end()) return QAccessible::accessibleInterface(found->second);
        auto made = std::make_unique<AccessibleRow>(m_table, row);
        AccessibleRow* const known = made.release(); // the registry owns it from here on
        m_rows[row] = QAccessible::registerAccessibleInterface(known);
        return known;
    }
    QAccessibleInterface* childAt(int x, int y) const override {
        return child(m_table.rowAtPoint(m_table.viewport()->mapFromGlobal(QPoint(x, y))));
    }
    QAccessibleInterface* focusChild() const override { return child(m_table.currentRow()); }
    int indexOfChild(const QAccessibleInterface* child) const override {
        const auto* row = dynamic_cast<const AccessibleRow*>(child);
        return row == nullptr ? -1 : row->row();
    }

private:
    TableView& m_table;
    mutable std::map<int, QAccessible::Id> m_rows;
};

/// Without a title bar it is a window, too.
class AccessibleWindow : public QAccessibleWidget {
public:
    explicit AccessibleWindow(Window& window) : QAccessibleWidget(&window, QAccessible::Window) {}
    ~AccessibleWindow() override = default;
};

/// The signature is the toolkit's: the registry owns what is made here.
QAccessibleInterface* makeInterface(const QString& /*className*/, QObject* object) {
    if (auto* slider = qobject_cast<Slider*>(object))
        return std::make_unique<AccessibleSlider>(*slider).release();
    if (auto* table = qobject_cast<TableView*>(object))
        return std::make_unique<AccessibleTable>(*table).release();
    if (auto* window = qobject_cast<Window*>(object))
        return std::make_unique<AccessibleWindow>(*window).release();
    return nullptr;
}

} // namespace

void installAccessibility() {
    static const bool installed = [] {
        QAccessible::installFactory(makeInterface);
        return true;
    }();
    (void)installed;
}

} // namespace cocoa
