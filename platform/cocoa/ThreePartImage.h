#pragma once

#include "platform/cocoa/Image.h"

namespace cocoa {

/// Draws a start cap and an end cap at their own sizes at the ends of `frame`, centred across it, and
/// stretches the centre between them and over the frame's whole thickness. Any image may be null: a null cap
/// leaves its room to the centre. Nothing is drawn past the frame's ends: where the caps have no room, each
/// is cut at the middle that divides the frame in the caps' proportion. Seams fall on device pixels.
void drawThreePartImage(QPainter& painter, const QRectF& frame, const Image& startCap,
                        const Image& centreFill, const Image& endCap,
                        Qt::Orientation orientation = Qt::Horizontal);

} // namespace cocoa
