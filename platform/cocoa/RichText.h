#pragma once

#include <QByteArray>

class QTextDocument;
class QTextEdit;

namespace cocoa {

/// Fills `document` from rich text (RTF 1.9, the part that a text document uses): paragraphs, line breaks,
/// tabs, bold, italic, font size, bullets, \'hh (Windows-1252) and \uN. Fonts, colours, pictures and groups
/// that it does not know are left out. Any bytes are safe to give; false when they are no rich text, with the
/// document left as it was.
bool readRtf(const QByteArray& rtf, QTextDocument& document);

/// Shows a file of rich text; false, with the view left as it was, when it can't be read.
bool readRTFDFromFile(QTextEdit& view, const QString& path);

} // namespace cocoa
