#include "app/Card.h"

#include "app/Skin.h"
#include "platform/cocoa/Scale.h"

#include <QKeyEvent>
#include <QLabel>
#include <QMouseEvent>
#include <QPainter>
#include <QPushButton>
#include <QScrollArea>
#include <QVBoxLayout>

#include <algorithm>

namespace app {
namespace {

constexpr QMarginsF margins{16, 12, 16, 12};
constexpr QMarginsF outerMargins{24, 20, 24, 40};
/// In a window that was made low the card takes what room there is.
constexpr double lowHeight = 240;

void setScaledMargins(QLayout& layout, const QMarginsF& margins) {
    layout.setContentsMargins((margins * cocoa::scaled(1)).toMargins());
}

/// The parent deletes it.
template <typename Widget, typename... Arguments> Widget* childOf(QWidget* parent, Arguments&&... arguments) {
    return std::make_unique<Widget>(std::forward<Arguments>(arguments)..., parent).release();
}

bool holdsControls(const QWidget& content) {
    const auto widgets = content.findChildren<QWidget*>();
    return std::any_of(widgets.begin(), widgets.end(),
                       [](const QWidget* widget) { return widget->focusPolicy() != Qt::NoFocus; });
}

} // namespace

Card::Card(const QString& title, std::unique_ptr<QWidget> content, QWidget& covered)
    : QWidget(covered.window()), m_covered(covered) {
    hide();
    covered.installEventFilter(this);
    setAccessibleName(title);
    dressInSkin(*this);

    auto* const frame = childOf<QFrame>(this);
    frame->setObjectName(QStringLiteral("card"));
    auto* const outer = childOf<QVBoxLayout>(this);
    outer->addWidget(frame);

    auto* const layout = childOf<QVBoxLayout>(frame);
    auto* const heading = childOf<QLabel>(frame, title);
    heading->setObjectName(QStringLiteral("cardTitle"));
    heading->setIndent(0);
    layout->addWidget(heading);
    auto* const area = childOf<QScrollArea>(frame);
    area->setFrameShape(QFrame::NoFrame);
    area->setWidgetResizable(true);
    area->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_holdsControls = holdsControls(*content);
    if (m_holdsControls) area->setFocusPolicy(Qt::NoFocus); // they have the keys that would scroll it
    area->setWidget(content.release());
    layout->addWidget(area);
    auto* const close = childOf<QPushButton>(frame, tr("Close"));
    layout->addWidget(close, 0, Qt::AlignRight);
    connect(close, &QPushButton::clicked, this, &Card::hide);
    m_close = close;
    m_frameLayout = layout;
    connect(&cocoa::Scale::shared(), &cocoa::Scale::changed, this, &Card::cover);
    cover();
}

void Card::open() {
    m_hadFocus = window()->focusWidget();
    show();
    raise();
    m_close->setFocus();
    if (m_holdsControls) focusNextPrevChild(true);
}

bool Card::focusNextPrevChild(bool next) {
    QWidget* const from = isAncestorOf(window()->focusWidget()) ? window()->focusWidget() : m_close;
    QWidget* to = from;
    do {
        to = next ? to->nextInFocusChain() : to->previousInFocusChain();
    } while (to != from && !(isAncestorOf(to) && to->isEnabled() && to->isVisible() &&
                             (to->focusPolicy() & Qt::TabFocus) == Qt::TabFocus));
    to->setFocus(next ? Qt::TabFocusReason : Qt::BacktabFocusReason);
    return true;
}

void Card::hideEvent(QHideEvent* event) {
    QWidget::hideEvent(event);
    if (m_hadFocus) m_hadFocus->setFocus();
    m_hadFocus.clear();
}

void Card::cover() {
    setGeometry(QRect(m_covered.mapTo(window(), QPoint()), m_covered.size()));
    const bool isLow = cocoa::designRect(*this).height() < lowHeight;
    setScaledMargins(*layout(),
                     isLow ? QMarginsF(outerMargins.left(), 2, outerMargins.right(), 2) : outerMargins);
    setScaledMargins(*m_frameLayout, margins);
}

bool Card::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::Resize || event->type() == QEvent::Move) cover();
    return QWidget::eventFilter(watched, event);
}

void Card::paintEvent(QPaintEvent* /*event*/) {
    QPainter(this).fillRect(rect(), QColor(0, 0, 0, 130));
}

/// Those on the card itself come here, too, where nothing on it takes them.
void Card::mousePressEvent(QMouseEvent* event) {
    const QWidget* const under = childAt(event->position().toPoint());
    if (!under) hide();
}

void Card::keyPressEvent(QKeyEvent* event) {
    event->key() == Qt::Key_Escape ? hide() : QWidget::keyPressEvent(event);
}

} // namespace app
