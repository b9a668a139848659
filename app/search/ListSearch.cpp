#include "app/search/ListSearch.h"

#include "app/search/SearchField.h"
#include "platform/cocoa/TableView.h"

#include <QApplication>
#include <QKeyEvent>
#include <QLocale>
#include <QScrollBar>

#include <algorithm>
#include <chrono>
#include <utility>

namespace app {
namespace {

using namespace std::chrono_literals;

constexpr auto changesEvery = 100ms;

bool hasCommandModifier(const QKeyEvent& key) {
    return key.modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier);
}

} // namespace

ListSearch::ListSearch(SearchField& field, cocoa::TableView& table, std::function<const TulPlaylist&()> list,
                       std::function<void()> layOut)
    : m_field(field), m_table(table), m_list(std::move(list)), m_layOut(std::move(layOut)) {
    m_table.installEventFilter(this);
    m_field.line().installEventFilter(this);
    connect(&m_field.line(), &QLineEdit::textChanged, this, [this] { search(); });
    m_lookingOn.setSingleShot(true);
    m_lookingOn.callOnTimeout([this] { lookOn(); });
    m_changes.setSingleShot(true);
    m_changes.setInterval(changesEvery);
    m_changes.callOnTimeout([this] { showChangedRows(); });
}

bool ListSearch::isOpen() const {
    return !m_field.isHidden();
}

void ListSearch::open() {
    if (!isOpen()) {
        const int row = m_table.currentRow();
        m_entryBefore = m_table.isRowHidden(row) ? 0 : m_list().entryAt(row)->id;
        m_field.show();
        m_layOut();
    }
    m_field.line().setFocus();
    m_field.line().selectAll();
}

void ListSearch::close() {
    if (!isOpen()) return;
    const bool hadKeyboard = m_field.window()->focusWidget() == &m_field.line();
    m_field.hide();
    m_field.line().clear();
    m_layOut();
    if (m_table.selectedRowIndexes().empty()) selectEntry(m_entryBefore);
    m_table.scrollRowToVisible(m_table.currentRow());
    if (hadKeyboard) m_table.setFocus();
}

bool ListSearch::hides(std::int32_t row) {
    const bool matches = m_filter.matches(m_list(), row);
    if (!m_filter.hasSeen(row) && !m_lookingOn.isActive()) m_lookingOn.start();
    return !matches;
}

std::vector<TextRange> ListSearch::rangesIn(const QString& text) const {
    if (!m_filter.isActive()) return {};
    return rangesOfWords(m_filter.words(), text);
}

bool ListSearch::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() != QEvent::KeyPress) return QObject::eventFilter(watched, event);
    auto& key = static_cast<QKeyEvent&>(*event);
    return watched == &m_table ? takeTableKey(key) : takeFieldKey(key);
}

bool ListSearch::takeTableKey(QKeyEvent& key) {
    if (key.key() == Qt::Key_Escape && isOpen()) {
        close();
        return true;
    }
    const QString text = key.text();
    const bool isTyped = !text.isEmpty() && text[0].isPrint() && !text[0].isSpace();
    if (!isTyped || hasCommandModifier(key)) return false;
    open();
    m_field.line().end(false); // what is there already is typed on
    QApplication::sendEvent(&m_field.line(), &key);
    return true;
}

bool ListSearch::takeFieldKey(QKeyEvent& key) {
    if (hasCommandModifier(key)) return false;
    switch (key.key()) {
    case Qt::Key_Escape:
        close();
        return true;
    case Qt::Key_Up:
    case Qt::Key_Down:
    case Qt::Key_PageUp:
    case Qt::Key_PageDown:
    case Qt::Key_Return:
    case Qt::Key_Enter:
        QApplication::sendEvent(&m_table, &key);
        return true;
    default:
        return false;
    }
}

void ListSearch::search() {
    m_lookingOn.stop();
    m_changes.stop();
    m_filter.setWords(foldedWords(m_field.line().text()));
    m_filter.lookOn(m_list());
    m_table.reloadData();
    if (m_filter.isActive())
        selectFirst();
    else
        m_table.scrollRowToVisible(m_table.currentRow());
    showResult();
}

void ListSearch::lookOn() {
    const bool isMore = m_filter.lookOn(m_list());
    if (!isMore) return showChangedRows();
    m_lookingOn.start();
    if (!m_changes.isActive()) m_changes.start();
}

void ListSearch::rowChanged(std::int32_t row) {
    if (m_filter.updateRow(m_list(), row) && !m_changes.isActive()) m_changes.start();
}

/// The selected row stays where it is, whatever comes and goes above it.
void ListSearch::showChangedRows() {
    m_changes.stop();
    const int row = m_table.currentRow();
    const double top = m_table.rectOfRow(row).top();
    m_table.reloadData();
    QScrollBar& bar = *m_table.verticalScrollBar();
    bar.setValue(bar.value() + static_cast<int>(m_table.rectOfRow(row).top() - top));
    if (m_table.selectedRowIndexes().empty()) selectFirst();
    showResult();
}

void ListSearch::listChanged() {
    if (!isOpen()) return;
    if (m_filter.isActive() && m_table.selectedRowIndexes().empty()) selectFirst();
    showResult();
}

void ListSearch::selectFirst() {
    const int first = m_table.rowAfter(-1);
    m_table.selectRowIndexes({first});
    m_table.scrollRowToVisible(first);
}

void ListSearch::selectEntry(std::uint64_t id) {
    const auto& entries = m_list().entries;
    const auto found = std::ranges::find(entries, id, [](const auto& entry) { return entry->id; });
    if (found != entries.end()) m_table.selectRowIndexes({static_cast<int>(found - entries.begin())});
}

void ListSearch::showResult() {
    if (!m_filter.isActive()) return m_field.setResult({});
    const QLocale english(QLocale::English);
    const TulPlaylist& list = m_list();
    m_field.setResult(QStringLiteral("%1 of %2")
                          .arg(english.toString(qulonglong{m_filter.count(list)}),
                               english.toString(qulonglong{list.entries.size()})));
}

} // namespace app
