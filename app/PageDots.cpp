#include "app/PageDots.h"

#include "controls/Colours.h"
#include "platform/cocoa/Image.h"
#include "platform/cocoa/Scale.h"

#include <QHBoxLayout>

#include <memory>

namespace app {
namespace {

constexpr int pitch = 12;

cocoa::Image dotImage(bool current, bool hovered) {
    if (current) return cocoa::Image::named(QStringLiteral("page_dot_current"));
    return cocoa::Image::named(hovered ? QStringLiteral("page_dot_hover") : QStringLiteral("page_dot"));
}

} // namespace

PageDot::PageDot(const QString& pageName, QWidget& parent) : QAbstractButton(&parent) {
    setAccessibleName(pageName);
    setToolTip(pageName);
    setCheckable(true);
    setAutoExclusive(true);
    setFocusPolicy(Qt::TabFocus);
    setAttribute(Qt::WA_Hover);
    connect(&cocoa::Scale::shared(), &cocoa::Scale::changed, this, &QWidget::updateGeometry);
}

QSize PageDot::sizeHint() const {
    return {cocoa::scaledToInt(pitch), cocoa::scaledToInt(pitch)};
}

void PageDot::paintEvent(QPaintEvent*) {
    cocoa::DesignPainter painter(this);
    const cocoa::Image image = dotImage(isChecked(), underMouse());
    QRectF place({}, image.size());
    place.moveCenter(cocoa::designRect(*this).center());
    image.drawInRect(painter, place);
    if (!hasFocus()) return;
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(colours::yellow(), 1.0));
    painter.drawEllipse(cocoa::designRect(*this).adjusted(0.5, 0.5, -0.5, -0.5));
}

void PageDots::setPages(const QStringList& names) {
    auto row = std::make_unique<QHBoxLayout>();
    row->setContentsMargins({});
    row->setSpacing(0);
    row->addStretch();
    for (const QString& name : names) {
        const int page = static_cast<int>(m_dots.size());
        PageDot* const dot = std::make_unique<PageDot>(name, *this).release();
        connect(dot, &QAbstractButton::clicked, this, [this, page] {
            if (m_action) m_action(page);
        });
        row->addWidget(dot);
        m_dots.push_back(dot);
    }
    row->addStretch();
    setLayout(row.release());
}

void PageDots::setCurrentPage(int page) {
    m_dots.at(static_cast<std::size_t>(page))->setChecked(true);
}

} // namespace app
