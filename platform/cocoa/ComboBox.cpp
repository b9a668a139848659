#include "platform/cocoa/ComboBox.h"

#include <QAbstractItemView>
#include <QAbstractListModel>
#include <QApplication>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPainter>
#include <QWheelEvent>

namespace cocoa {

/// The data source's items as the pop-up list reads them.
class ComboBox::Items : public QAbstractListModel {
public:
    void setDataSource(ComboBoxDataSource* source) {
        beginResetModel();
        m_source = source;
        m_count = source == nullptr ? 0 : source->numberOfItemsInComboBox();
        endResetModel();
    }
    int rowCount(const QModelIndex& parent) const override { return parent.isValid() ? 0 : m_count; }
    QVariant data(const QModelIndex& index, int role) const override {
        if (role != Qt::DisplayRole || m_source == nullptr || !index.isValid()) return {};
        if (index.row() >= m_source->numberOfItemsInComboBox()) return {};
        const QString text = m_source->objectValueForItemAtIndex(index.row()).value_or(QString());
        return m_source->isMarkedItemAtIndex(index.row()) ? text + QStringLiteral("  •") : text;
    }

private:
    ComboBoxDataSource* m_source = nullptr;
    int m_count = 0;
};

ComboBox::ComboBox(QWidget* parent)
    : QComboBox(parent), m_cell(std::make_unique<ComboBoxCell>()), m_items(std::make_unique<Items>()) {
    m_cell->setControlView(this);
    setModel(m_items.get());
    makeEditable();
    setInsertPolicy(NoInsert);
    setCompleter(nullptr);
    setFocusPolicy(Qt::StrongFocus); // a passing wheel must not take the keyboard
    lineEdit()->setFrame(false);
    // Handle typing here: QComboBox would choose an item that matches case-insensitively.
    disconnect(lineEdit(), &QLineEdit::returnPressed, this, nullptr);
    disconnect(lineEdit(), &QLineEdit::editingFinished, this, nullptr);
    connect(this, &QComboBox::activated, this, &ComboBox::chooseItem);
    connect(lineEdit(), &QLineEdit::textChanged, this,
            qOverload<>(&QWidget::update)); // the cell may draw by it
}

ComboBox::~ComboBox() = default;

/// A new line edit lays its empty text out in the application's font before it takes the box's own. Loading a
/// font that may never be seen takes a tenth of the time until the window shows.
void ComboBox::makeEditable() {
    const QFont applicationFont = QGuiApplication::font();
    QGuiApplication::setFont(font());
    setEditable(true);
    QGuiApplication::setFont(applicationFont);
}

void ComboBox::setDataSource(ComboBoxDataSource* source) {
    m_dataSource = source;
    m_selectedItem = -1;
    const QString text = stringValue();
    m_items->setDataSource(source);
    lineEdit()->setText(text);
}

void ComboBox::setCell(std::unique_ptr<ComboBoxCell> cell) {
    if (cell == nullptr) return;
    m_cell = std::move(cell);
    m_cell->setControlView(this);
    placeLineEdit();
    update();
}

QString ComboBox::stringValue() const {
    return lineEdit()->text();
}

void ComboBox::setStringValue(const QString& string) {
    if (lineEdit()->isModified() && string == m_committed) return;
    replaceText(string);
}

void ComboBox::replaceText(const QString& string) {
    m_committed = string;
    lineEdit()->setText(string);
    lineEdit()->setCursorPosition(0);
    update();
}

void ComboBox::showPopup() {
    // The list may have changed since it was last read; reading it again must not touch the text.
    const QString text = stringValue();
    const bool typed = lineEdit()->isModified();
    {
        const QSignalBlocker quiet(this);
        m_items->setDataSource(m_dataSource);
        if (m_dataSource != nullptr) {
            const std::int64_t current = m_dataSource->indexOfItemWithStringValue(text);
            setCurrentIndex(current < m_items->rowCount({}) ? int(current) : -1);
        }
        lineEdit()->setText(text);
        lineEdit()->setModified(typed);
    }
    if (m_items->rowCount({}) > 0) QComboBox::showPopup();
}

void ComboBox::chooseItem(int index) {
    if (m_dataSource == nullptr || index < 0 || index >= m_dataSource->numberOfItemsInComboBox()) return;
    replaceText(m_dataSource->objectValueForItemAtIndex(index).value_or(QString()));
    commit(index);
}

void ComboBox::commitTyping() {
    // The text that stood there already is no choice, even where an item is called so.
    const bool chooses = m_dataSource != nullptr && stringValue() != m_committed;
    const std::int64_t item = chooses ? m_dataSource->indexOfItemWithStringValue(stringValue()) : NotFound;
    commit(item == NotFound ? -1 : int(item));
}

void ComboBox::validateEditing() {
    if (lineEdit()->isModified()) commit(-1);
}

void ComboBox::commit(int item) {
    m_selectedItem = item;
    m_committed = stringValue();
    lineEdit()->setModified(false);
    if (m_action) m_action();
}

void ComboBox::revertTyping() {
    replaceText(m_committed);
    lineEdit()->selectAll();
}

void ComboBox::placeLineEdit() {
    lineEdit()->setGeometry(m_cell->textRectForFrame(rect()).toAlignedRect());
}

void ComboBox::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    m_cell->drawWithFrame(painter, rect());
}

void ComboBox::resizeEvent(QResizeEvent* event) {
    QComboBox::resizeEvent(event);
    placeLineEdit();
}

void ComboBox::changeEvent(QEvent* event) {
    QComboBox::changeEvent(event);
    if (event->type() == QEvent::StyleChange && m_cell) placeLineEdit();
}

void ComboBox::keyPressEvent(QKeyEvent* event) {
    // The keyboard is this widget's, not the line edit's, which gets what is left. The toolkit's own handling
    // would step through the items.
    switch (event->key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
        return commitTyping();
    case Qt::Key_Escape:
        return revertTyping();
    case Qt::Key_Down:
    case Qt::Key_Up:
        return showPopup();
    default:
        // Not sent: what the line edit leaves would come back up to this widget, without end.
        lineEdit()->event(event);
    }
}

void ComboBox::focusOutEvent(QFocusEvent* event) {
    const bool leaving =
        event->reason() != Qt::ActiveWindowFocusReason && QApplication::activePopupWidget() == nullptr;
    if (leaving) validateEditing();
    QComboBox::focusOutEvent(event);
}

void ComboBox::wheelEvent(QWheelEvent* event) {
    event->ignore(); // a passing wheel must not switch the choice
}

} // namespace cocoa
