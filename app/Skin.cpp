#include "app/Skin.h"

#include "platform/cocoa/Scale.h"

#include <QApplication>
#include <QFile>
#include <QPalette>
#include <QRegularExpression>
#include <QToolTip>
#include <QWidget>

namespace app {
namespace {

QPalette skinPalette() {
    QPalette palette(QColor(0x29, 0x36, 0x44), QColor(0x22, 0x22, 0x22));
    palette.setColor(QPalette::Base, QColor(0x15, 0x17, 0x1a));
    palette.setColor(QPalette::Text, QColor(0xd7, 0xe3, 0xf2));
    palette.setColor(QPalette::WindowText, QColor(0xb9, 0xc6, 0xd6));
    palette.setColor(QPalette::ButtonText, QColor(0xd7, 0xe3, 0xf2));
    palette.setColor(QPalette::Highlight, QColor(0x4a, 0x90, 0xe2));
    palette.setColor(QPalette::HighlightedText, QColor(0xff, 0xff, 0xff));
    palette.setColor(QPalette::PlaceholderText, QColor(0x7d, 0x88, 0x96));
    palette.setColor(QPalette::AlternateBase, QColor(0x1b, 0x1e, 0x22));
    palette.setColor(QPalette::ToolTipBase, QColor(0x23, 0x27, 0x2c));
    palette.setColor(QPalette::ToolTipText, QColor(0xd7, 0xe3, 0xf2));
    palette.setColor(QPalette::Link, QColor(0x4a, 0x90, 0xe2));
    for (const auto role : {QPalette::Text, QPalette::WindowText, QPalette::ButtonText})
        palette.setColor(QPalette::Disabled, role, QColor(0x66, 0x70, 0x7d));
    return palette;
}

/// The lengths of the skin's style, which are in pixels, are points of the design.
QString scaledStyle() {
    static const QString style = [] {
        QFile file(QStringLiteral(":/style/skin.qss"));
        return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
    }();
    static const QRegularExpression length(QStringLiteral("(\\d+)px"));
    QString scaled;
    qsizetype copied = 0;
    for (const QRegularExpressionMatch& match : length.globalMatch(style)) {
        scaled += QStringView(style).mid(copied, match.capturedStart() - copied);
        scaled += QStringLiteral("%1px").arg(cocoa::scaledToInt(match.captured(1).toInt()));
        copied = match.capturedEnd();
    }
    scaled += QStringView(style).mid(copied);
    return scaled;
}

} // namespace

void useSkinColours() {
    const QPalette palette = skinPalette();
    QApplication::setPalette(palette);
    QToolTip::setPalette(palette);
}

void dressInSkin(QWidget& widget) {
    widget.setStyleSheet(scaledStyle());
    QObject::connect(&cocoa::Scale::shared(), &cocoa::Scale::changed, &widget,
                     [&widget] { widget.setStyleSheet(scaledStyle()); });
}

} // namespace app
