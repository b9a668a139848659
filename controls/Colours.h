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

} // namespace colours
