#pragma once

#include <QWidget>

#include <memory>

/// The parts of the gallery: plain compositions of the controls, at the places that they have in the main
/// window.
namespace gallery {

/// The whole main window, 380 x 600 points.
std::unique_ptr<QWidget> makeMainWindow(bool playing);

/// Sliders: every combination of images, at minimum, middle and maximum, enabled, focused and not.
std::unique_ptr<QWidget> makeSliders();

/// Rows of every kind, in a table.
std::unique_ptr<QWidget> makeRows();

/// Spectra, the selector, the buttons' pictures, the cover and the icon.
std::unique_ptr<QWidget> makeSmallViews();

} // namespace gallery
