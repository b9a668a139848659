#pragma once

#include <QByteArray>

class QTextDocument;
class QTextEdit;

namespace cocoa {

/// Fills `document` from rich text (RTF 1.9, the part that a text document uses): paragraphs, line breaks,
/// tabs, bold, italic, font size, bullets, \'hh (Windows-1252) and \uN. Fonts, colours, pictures and unknown
/// groups are skipped. Safe for any bytes; false when they are not rich text, with the document unchanged.
bool readRtf(const QByteArray& rtf, QTextDocument& document);

/// Shows a file of rich text; false, with the view left as it was, when it can't be read.
bool readRTFDFromFile(QTextEdit& view, const QString& path);

} // namespace cocoa
