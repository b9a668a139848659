#include "app/editing/InformationPanel.h"

#include "app/DisplayText.h"
#include "app/Skin.h"
#include "core/background/Workers.h"
#include "core/playlist/FileDetails.h"
#include "core/playlist/resolveEntrySource.h"
#include "platform/cocoa/Scale.h"

#include <QClipboard>
#include <QFile>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QLocale>
#include <QPainter>
#include <QPointer>

#include <cmath>
#include <memory>
#include <optional>

namespace app {
namespace {

constexpr QMarginsF outerMargins{24, 20, 24, 40};
/// In a window that was made low the panel takes what room there is.
constexpr double lowHeight = 240;
constexpr int padding = 16;
constexpr int titleHeight = 38;
constexpr QSizeF buttonSize{70, 24};
constexpr double radius = 8;

QString channelsText(int channels) {
    if (channels == 1) return QObject::tr("mono");
    return channels == 2 ? QObject::tr("stereo") : QObject::tr("%1 channels").arg(channels);
}

QString formatText(const FileDetails& details) {
    QStringList parts{QString::fromStdString(details.format)};
    if (details.sampleRate > 0) parts << QObject::tr("%1 kHz").arg(details.sampleRate / 1000.0);
    if (details.channels > 0) parts << channelsText(details.channels);
    if (details.bitsPerSample > 0) parts << QObject::tr("%1 bit").arg(details.bitsPerSample);
    parts.removeAll(QString());
    return parts.join(QStringLiteral(", "));
}

QString decibels(float gain) {
    const QChar sign = gain < 0 ? QChar(0x2212) : QLatin1Char('+');
    return QObject::tr("%1%2 dB").arg(sign).arg(std::abs(gain), 0, 'f', 1);
}

/// Like "−7.2 dB track, −6.9 dB album".
QString loudnessText(const FileDetails& details) {
    QStringList parts;
    if (details.trackGain) parts << QObject::tr("%1 track").arg(decibels(*details.trackGain));
    if (details.albumGain) parts << QObject::tr("%1 album").arg(decibels(*details.albumGain));
    return parts.join(QStringLiteral(", "));
}

/// With hundredths of a second.
QString lengthText(double seconds) {
    const double whole = std::floor(seconds);
    const int hundredths = static_cast<int>((seconds - whole) * 100);
    return timeText(whole) + QStringLiteral(".%1").arg(hundredths, 2, 10, QLatin1Char('0'));
}

QString html(const InformationPanel::Lines& lines) {
    QString rows;
    for (const auto& [name, text] : lines)
        rows += QStringLiteral("<tr><td width=\"%3\" style=\"color:#9aa5b4\">%1</td><td>%2</td></tr>")
                    .arg(name.toHtmlEscaped(), text.toHtmlEscaped())
                    .arg(cocoa::scaledToInt(100));
    return QStringLiteral("<table cellpadding=\"2\" cellspacing=\"0\" width=\"100%\">%1</table>").arg(rows);
}

} // namespace

void InformationPanel::show(QWidget& page, Workers& workers, const std::string& source) {
    // The page's own widgets are its parent's: the panel lies over them all.
    const QPointer<InformationPanel> panel =
        std::make_unique<InformationPanel>(page, source).release(); // its parent's
    panel->QWidget::show();
    panel->m_close.setFocus();
    if (isAddress(source)) return;
    workers.run(Workers::Lane::own, [panel, source](const Workers::Reply& reply) {
        const auto details = std::make_shared<std::optional<FileDetails>>(readFileDetails(source));
        reply.post([panel, details] {
            if (!panel) return;
            panel->showLines(*details ? linesOf(**details)
                                      : Lines{{tr("Format"), tr("The file cannot be read")}});
        });
    });
}

InformationPanel::InformationPanel(QWidget& page, const std::string& source)
    : QWidget(page.parentWidget()),
      m_page(page),
      m_source(source),
      m_text(this),
      m_copy(tr("Copy"), this),
      m_close(tr("Close"), this) {
    setObjectName(QStringLiteral("informationPanel"));
    setAccessibleName(tr("File Information"));
    dressInSkin(*this);
    m_text.setFrameShape(QFrame::NoFrame);
    m_text.setAccessibleName(tr("File Information"));
    m_text.setWordWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    m_text.setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    connect(&m_copy, &QPushButton::clicked, this, [this] { QGuiApplication::clipboard()->setText(text()); });
    connect(&m_close, &QPushButton::clicked, this, [this] { shut(); });
    page.installEventFilter(this);
    connect(&cocoa::Scale::shared(), &cocoa::Scale::changed, this, [this] {
        m_text.setHtml(html(m_lines));
        layOut();
    });
    setGeometry(page.geometry());
    showLines({});
}

InformationPanel::Lines InformationPanel::linesOf(const FileDetails& details) {
    Lines lines;
    for (const auto& [name, text] : details.tags)
        lines.emplace_back(QString::fromStdString(name), QString::fromStdString(text));
    lines.emplace_back(tr("Length"), lengthText(details.length));
    lines.emplace_back(tr("Format"), formatText(details));
    if (details.bitRate > 0) lines.emplace_back(tr("Bit rate"), tr("%1 kbit/s").arg(details.bitRate));
    if (const QString loudness = loudnessText(details); !loudness.isEmpty())
        lines.emplace_back(tr("Loudness"), loudness);
    lines.emplace_back(
        tr("Size"), QLocale(QLocale::English)
                        .formattedDataSize(static_cast<qint64>(details.size), 1, QLocale::DataSizeSIFormat));
    return lines;
}

void InformationPanel::showLines(Lines lines) {
    m_lines = std::move(lines);
    m_lines.emplace_back(isAddress(m_source) ? tr("Address") : tr("Path"),
                         QFile::decodeName(QByteArray::fromStdString(m_source)));
    m_text.setHtml(html(m_lines));
}

QString InformationPanel::text() const {
    QString text;
    for (const auto& [name, value] : m_lines)
        text += name + QStringLiteral(": ") + value + QLatin1Char('\n');
    return text;
}

void InformationPanel::shut() {
    m_page.setFocus();
    deleteLater();
    hide();
}

QRectF InformationPanel::panelRect() const {
    const QRectF whole = cocoa::designRect(*this);
    const bool isLow = whole.height() < lowHeight;
    const QMarginsF around =
        isLow ? QMarginsF(outerMargins.left(), 4, outerMargins.right(), 4) : outerMargins;
    return whole.marginsRemoved(around).adjusted(0.5, 0.5, -0.5, -0.5);
}

void InformationPanel::paintEvent(QPaintEvent* /*event*/) {
    cocoa::DesignPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.fillRect(cocoa::designRect(*this), QColor(0, 0, 0, 115));
    painter.setPen(QColor(0x3f, 0x46, 0x4f));
    painter.setBrush(QColor(0x1d, 0x21, 0x26));
    painter.drawRoundedRect(panelRect(), radius, radius);
    QFont bold(QStringLiteral("Roboto"));
    bold.setPixelSize(12);
    bold.setBold(true);
    painter.setFont(bold);
    painter.setPen(QColor(0xe6, 0xed, 0xf5));
    painter.drawText(panelRect().adjusted(padding, 0, 0, 0).topLeft() + QPointF(0, 24), accessibleName());
}

void InformationPanel::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    layOut();
}

void InformationPanel::layOut() {
    const QRectF inside = panelRect().adjusted(padding, titleHeight, -padding, -14);
    const QPointF width(buttonSize.width(), 0);
    const QPointF height(0, buttonSize.height());
    m_copy.setGeometry(cocoa::scaledToInt(QRectF(inside.bottomLeft() - height, buttonSize)));
    m_close.setGeometry(cocoa::scaledToInt(QRectF(inside.bottomRight() - width - height, buttonSize)));
    m_text.setGeometry(cocoa::scaledToInt(inside.adjusted(-6, 0, 6, -buttonSize.height() - 10)));
}

void InformationPanel::keyPressEvent(QKeyEvent* event) {
    event->key() == Qt::Key_Escape ? shut() : QWidget::keyPressEvent(event);
}

bool InformationPanel::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::Resize || event->type() == QEvent::Move) setGeometry(m_page.geometry());
    return QWidget::eventFilter(watched, event);
}

} // namespace app
