// The second stage of the screen display: copies a window's display copy to
// the screen band by band (one 65000-byte block at a time), through the
// palette and its dither when palette mode is on, and paints the solid-colour
// and histogram windows.
#pragma once

#include <QColor>
#include <QImage>
#include <QRect>

#include "image/window.h"

class QPainter;

namespace lv {

// The colour of an interface fill through the display tables.
QColor DisplayQColor(int32_t red, int32_t green, int32_t blue);

// Fills a rectangle with a colour after the display tables; in palette mode
// other colours than black, white and the two grays are dithered.
void FillColor(QPainter& painter, const QRect& rect, QColor color);

// A small picture (a thumbnail) as the screen shows it, top row first:
// bits and grays through the display tables, colour as it is, since a
// thumbnail's colour has been through them already. Null for other kinds.
QImage ThumbnailToScreen(const Image& image);

// Paints a window's client area of the given size: the picture at the
// record's origin with the border colour around it and the grid over it, a
// solid colour, or a histogram. `clip` is the area to repaint; bands of the
// picture that miss it are skipped.
void PaintWindow(QPainter& painter, ImageWindow& record, int32_t clientWidth, int32_t clientHeight,
                 const QRect& clip);

}  // namespace lv
