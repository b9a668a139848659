#include "app/settings/SettingsPanel.h"

#include "app/settings/Settings.h"
#include "app/settings/Switch.h"
#include "controls/Colours.h"
#include "controls/RixSlider.h"
#include "core/player/TulLoudness.h"
#include "platform/cocoa/Scale.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QWheelEvent>

#include <chrono>
#include <memory>
#include <utility>

namespace app {
namespace {

using namespace std::chrono_literals;

constexpr auto sharingInterval = 1s;
constexpr double textSizeStep = 5;
constexpr int maxNameLength = 60;

constexpr double rowHeight = 28;
constexpr QSizeF choiceSize{140, 20};
constexpr QSizeF nameSize{128, 20};
constexpr QSizeF portSize{52, 20};
constexpr QSizeF sliderSize{150, 22};
constexpr double percentWidth = 38;

/// The parent deletes it.
template <typename Widget, typename... Arguments> Widget* childOf(QWidget* parent, Arguments&&... arguments) {
    return std::make_unique<Widget>(std::forward<Arguments>(arguments)..., parent).release();
}

void setDesignSize(QWidget& widget, const QSizeF& size) {
    widget.setFixedSize(cocoa::scaledToInt(size.width()), cocoa::scaledToInt(size.height()));
}

} // namespace

void Choice::paintEvent(QPaintEvent* event) {
    QComboBox::paintEvent(event);
    cocoa::DesignPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(colours::blue());
    const QRectF box = cocoa::designRect(*this);
    const QPointF tip(box.right() - 10, box.center().y() + 3);
    painter.drawPolygon(QPolygonF{tip, tip + QPointF(-4, -5), tip + QPointF(4, -5)});
}

/// A passing wheel must not change the choice.
void Choice::wheelEvent(QWheelEvent* event) {
    event->ignore();
}

SettingsPanel::SettingsPanel(Settings& settings, Sharing sharing, QWidget* parent)
    : QWidget(parent),
      m_settings(settings),
      m_sharing(std::move(sharing)),
      m_rows(childOf<QVBoxLayout>(this)) {
    m_rows->setSpacing(0);
    m_rows->setContentsMargins({});
    m_restoresSession = addSwitch(tr("Restore the session at start"), &Settings::setRestoresSession);
    m_restoresSession->setNote(tr("List, track and position; starts paused"));
    m_showsNotifications = addSwitch(tr("Notifications"), &Settings::setShowsNotifications);
    m_loudness = childOf<Choice>(this);
    for (const auto& [title, loudness] : {std::pair{tr("Off"), TulLoudness::off},
                                          {tr("Track"), TulLoudness::track},
                                          {tr("Album"), TulLoudness::album}})
        m_loudness->addItem(title, static_cast<int>(loudness));
    connect(m_loudness, &QComboBox::activated, this,
            [this] { m_settings.setLoudness(static_cast<TulLoudness>(m_loudness->currentData().toInt())); });
    addRow(tr("Loudness"), *m_loudness);
    addSharing();
    addTextSize();
    m_pausesWhenSinkIsRemoved =
        addSwitch(tr("Pause when headphones are removed"), &Settings::setPausesWhenSinkIsRemoved);
    m_keepsAwake = addSwitch(tr("Keep the computer awake while playing"), &Settings::setKeepsAwake);
    m_rows->addStretch();

    connect(&settings, &Settings::changed, this, &SettingsPanel::showSettings);
    connect(&cocoa::Scale::shared(), &cocoa::Scale::changed, this, &SettingsPanel::layOut);
    m_sharingTimer.callOnTimeout([this] { showSharing(); });
    layOut();
}

Switch* SettingsPanel::addSwitch(const QString& title, void (Settings::*set)(bool)) {
    auto* const made = childOf<Switch>(this, title);
    m_rows->addWidget(made);
    connect(made, &QAbstractButton::clicked, &m_settings, set);
    return made;
}

QHBoxLayout* SettingsPanel::addRow(const QString& title, QWidget& control) {
    QHBoxLayout* const row = std::make_unique<QHBoxLayout>().release(); // the column's
    row->addWidget(childOf<QLabel>(this, title));
    row->addStretch();
    row->addWidget(&control);
    m_rows->addLayout(row);
    control.setAccessibleName(title);
    return row;
}

void SettingsPanel::addSharing() {
    m_shares = childOf<Switch>(this, tr("Share on the network"));
    m_rows->addWidget(m_shares);
    connect(m_shares, &QAbstractButton::clicked, this, [this] {
        m_sharing.toggle();
        showSharing();
    });
    m_sharingName = childOf<QLineEdit>(this);
    m_sharingName->setMaxLength(maxNameLength);
    connect(m_sharingName, &QLineEdit::editingFinished, this, [this] {
        const QString name = m_sharingName->text().trimmed();
        if (name.isEmpty()) return showSettings();
        if (name != m_settings.sharingName()) m_settings.setSharingName(name);
    });
    m_sharingPort = childOf<QLineEdit>(this);
    m_sharingPort->setAccessibleName(tr("Sharing port"));
    m_sharingPort->setToolTip(tr("%1 to %2").arg(Settings::minPort).arg(Settings::maxPort));
    // One that is not valid yet may be typed, and is put back when the field is left.
    m_sharingPort->setMaxLength(5);
    connect(m_sharingPort, &QLineEdit::editingFinished, this, [this] {
        const int port = m_sharingPort->text().toInt();
        if (port < Settings::minPort || port > Settings::maxPort) return showSettings();
        if (port != m_settings.sharingPort()) m_settings.setSharingPort(port);
    });
    QHBoxLayout* const row = addRow(tr("Name and port"), *m_sharingName);
    m_sharingName->setAccessibleName(tr("Sharing name"));
    row->addWidget(m_sharingPort);
}

void SettingsPanel::addTextSize() {
    m_textSize = childOf<RixSlider>(this);
    m_textSize->setKnobImage(cocoa::Image::named(QStringLiteral("slider_knob")));
    m_textSize->setBarFillImage(cocoa::Image::named(QStringLiteral("slider_track_fill")));
    m_textSize->setBarFillBeforeKnobImage(cocoa::Image::named(QStringLiteral("slider_position_fill")));
    m_textSize->setBarLeftAgeImage(cocoa::Image::named(QStringLiteral("slider_position_left")));
    m_textSize->setBarRightAgeImage(cocoa::Image::named(QStringLiteral("slider_track_right")));
    m_textSize->cell()->setControlSize(cocoa::ControlSize::mini);
    m_textSize->setMinValue(Settings::minTextSize);
    m_textSize->setMaxValue(Settings::maxTextSize);
    m_textSize->setStep(textSizeStep);
    const auto percentOf = [](double value) { return qRound(value / textSizeStep) * int(textSizeStep); };
    m_textSize->setValueText([percentOf](double value) { return tr("%1 %").arg(percentOf(value)); });
    m_textSize->setShowsValueAtPointer(true);
    // Not while it is dragged: the slider would grow under the pointer.
    m_textSize->setContinuous(false);
    m_textSize->setAction(
        [this, percentOf] { m_settings.setTextSize(percentOf(m_textSize->doubleValue())); });
    m_textSizeText = childOf<QLabel>(this);
    m_textSizeText->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    addRow(tr("Text size"), *m_textSize)->addWidget(m_textSizeText);
}

void SettingsPanel::showSettings() {
    m_restoresSession->setChecked(m_settings.restoresSession());
    m_showsNotifications->setChecked(m_settings.showsNotifications());
    m_loudness->setCurrentIndex(m_loudness->findData(static_cast<int>(m_settings.loudness())));
    m_sharingName->setText(m_settings.sharingName());
    m_sharingPort->setText(QString::number(m_settings.sharingPort()));
    m_textSize->setDoubleValue(m_settings.textSize());
    m_textSizeText->setText(tr("%1 %").arg(m_settings.textSize()));
    m_pausesWhenSinkIsRemoved->setChecked(m_settings.pausesWhenSinkIsRemoved());
    m_keepsAwake->setChecked(m_settings.keepsAwake());
}

void SettingsPanel::showSharing() {
    const bool isOn = m_sharing.isOn();
    m_shares->setChecked(isOn);
    m_shares->setNote(isOn ? m_sharing.text() : tr("Others can listen to what plays"));
}

void SettingsPanel::layOut() {
    for (int i = 0; i < m_rows->count(); ++i) {
        auto* const row = qobject_cast<QHBoxLayout*>(m_rows->itemAt(i)->layout());
        if (!row) continue;
        row->setContentsMargins(0, cocoa::scaledToInt((rowHeight - choiceSize.height()) / 2), 0,
                                cocoa::scaledToInt((rowHeight - choiceSize.height()) / 2));
        row->setSpacing(cocoa::scaledToInt(6));
    }
    setDesignSize(*m_loudness, choiceSize);
    setDesignSize(*m_sharingName, nameSize);
    setDesignSize(*m_sharingPort, portSize);
    setDesignSize(*m_textSize, sliderSize);
    m_textSizeText->setFixedWidth(cocoa::scaledToInt(percentWidth));
}

void SettingsPanel::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    showSettings();
    showSharing();
    m_sharingTimer.start(sharingInterval);
}

void SettingsPanel::hideEvent(QHideEvent* event) {
    QWidget::hideEvent(event);
    m_sharingTimer.stop();
}

} // namespace app
