#pragma once

#include "platform/cocoa/ComboBoxCell.h"
#include "platform/cocoa/ComboBoxDataSource.h"

#include <QComboBox>

#include <functional>
#include <memory>

namespace cocoa {

/// A combo box with free text whose items come from a data source and whose look comes from a cell. Choosing
/// an item, Enter, and leaving the box after typing call the action; Escape reverts the text. Leaving chooses
/// no item. Use the functions below, not QComboBox's own for items and index.
class ComboBox : public QComboBox {
    Q_OBJECT
public:
    explicit ComboBox(QWidget* parent = nullptr);
    ~ComboBox() override;

    /// Not owned; must outlive the box or be reset to null.
    void setDataSource(ComboBoxDataSource* source);
    /// Never null: a plain ComboBoxCell until another is set.
    ComboBoxCell* cell() const { return m_cell.get(); }
    void setCell(std::unique_ptr<ComboBoxCell> cell);

    QString stringValue() const;
    /// Shows a text; selects no item and calls no action. Setting the current text again does not disturb
    /// typing.
    void setStringValue(const QString& string);
    /// Commits the typed text and calls the action. Chooses no item, even if one has that text.
    void validateEditing();
    /// The item that was chosen, or whose text was typed; -1 for none.
    int indexOfSelectedItem() const { return m_selectedItem; }

    void setAction(std::function<void()> action) { m_action = std::move(action); }

    void showPopup() override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void changeEvent(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

private:
    void makeEditable();
    class Items;
    void chooseItem(int index);
    void commitTyping();
    void commit(int item);
    void revertTyping();
    void replaceText(const QString& string);
    void placeLineEdit();

    ComboBoxDataSource* m_dataSource = nullptr;
    std::unique_ptr<ComboBoxCell> m_cell;
    std::unique_ptr<Items> m_items;
    int m_selectedItem = -1;
    QString m_committed;
    std::function<void()> m_action;
};

} // namespace cocoa
