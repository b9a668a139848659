#include "app/settings/Switch.h"

#include "controls/Colours.h"
#include "platform/cocoa/Scale.h"

namespace app {
namespace {

constexpr double plainHeight = 28;
constexpr double notedHeight = 42;
constexpr double titleHeight = 28;
constexpr QSizeF trackSize{28, 14};
constexpr double knobRadius = 5.2;
constexpr double knobInset = 7;

QFont textFont(int size) {
    QFont font(QStringLiteral("Roboto"));
    font.setPixelSize(size);
    return font;
}

} // namespace

Switch::Switch(const QString& title, QWidget* parent) : QCheckBox(title, parent) {
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    connect(&cocoa::Scale::shared(), &cocoa::Scale::changed, this, &QWidget::updateGeometry);
}

void Switch::setNote(const QString& note) {
    if (note == m_note) return;
    m_note = note;
    setAccessibleDescription(note);
    updateGeometry();
    update();
}

QSize Switch::sizeHint() const {
    return {cocoa::scaledToInt(200), cocoa::scaledToInt(m_note.isEmpty() ? plainHeight : notedHeight)};
}

QSize Switch::minimumSizeHint() const {
    return sizeHint();
}

bool Switch::hitButton(const QPoint& place) const {
    return rect().contains(place);
}

void Switch::enterEvent(QEnterEvent* event) {
    QCheckBox::enterEvent(event);
    update();
}

void Switch::leaveEvent(QEvent* event) {
    QCheckBox::leaveEvent(event);
    update();
}

void Switch::paintEvent(QPaintEvent* /*event*/) {
    cocoa::DesignPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF row = cocoa::designRect(*this);
    const QRectF title(0, 0, row.width() - trackSize.width() - 8, titleHeight);
    painter.setFont(textFont(11));
    painter.setPen(QColor(0xe6, 0xed, 0xf5));
    painter.drawText(title, Qt::AlignLeft | Qt::AlignVCenter, text());
    if (!m_note.isEmpty()) {
        painter.setFont(textFont(10));
        painter.setPen(QColor(0x9a, 0xa5, 0xb4));
        const QRectF below(0, titleHeight - 7, title.width(), 16);
        painter.drawText(below, Qt::AlignLeft | Qt::AlignVCenter,
                         painter.fontMetrics().elidedText(m_note, Qt::ElideRight, int(below.width())));
    }

    const QRectF track(QPointF(row.width() - trackSize.width() - 1, (titleHeight - trackSize.height()) / 2),
                       trackSize);
    const double radius = trackSize.height() / 2;
    const QColor off = underMouse() ? QColor(0x57, 0x62, 0x70) : QColor(0x3f, 0x48, 0x54);
    const QColor on = underMouse() ? colours::blue().lighter(112) : colours::blue();
    painter.setPen(Qt::NoPen);
    painter.setBrush(isChecked() ? on : off);
    painter.drawRoundedRect(track, radius, radius);
    painter.setBrush(isChecked() ? QColor(0xf3, 0xf6, 0xfa) : QColor(0xb9, 0xc6, 0xd6));
    const double knob = isChecked() ? track.right() - knobInset : track.left() + knobInset;
    painter.drawEllipse(QPointF(knob, track.center().y()), knobRadius, knobRadius);
    if (!hasFocus()) return;
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(colours::yellow(), 1));
    painter.drawRoundedRect(track.adjusted(-2.5, -2.5, 2.5, 2.5).intersected(row.adjusted(0, 0, -0.5, 0)),
                            radius + 2.5, radius + 2.5);
}

} // namespace app
