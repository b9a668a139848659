#pragma once

#include <QColor>

/// The skin's colours, sRGB. The selection and row backgrounds belong to the page that fills the rows.
namespace colours {

/// Inactive row text, row separators and spectrum bars.
inline QColor blue() {
    return QColor::fromRgbF(0.29F, 0.565F, 0.886F);
}

/// Text of the active row.
inline QColor yellow() {
    return QColor::fromRgbF(0.973F, 0.906F, 0.11F);
}

/// Background of search matches.
inline QColor mark() {
    return {0x4a, 0x90, 0xe2, 56};
}

/// The mark and the reason of a row that does not play; used for nothing else.
inline QColor red() {
    return {0xe2, 0x79, 0x5a};
}

/// Text of a row that does not play.
inline QColor grey() {
    return {0x5c, 0x6b, 0x7d};
}

} // namespace colours
