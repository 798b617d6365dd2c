// The screen display: the first stage, which builds a window's display copy
// (the visible part at the window's zoom, through the display tables, with
// the mask overlay blended in), and the pixel rules of the second stage that
// the front end's painter needs (palette-mode dithering, fills, the
// histogram and the grid). The front end only copies bands of `display` to
// the screen.
#pragma once

#include <cstdint>
#include <vector>

#include "image/display_tables.h"
#include "image/window.h"

namespace lv {

// 0 true colour, 2 palette (236 colours: a 20-step gray ramp and a 6x6x6
// cube, dithered at paint time).
enum DisplayMode : int32_t { kDisplayTrueColor = 0, kDisplayPalette = 2 };
DisplayMode CurrentDisplayMode();
void SetDisplayMode(DisplayMode mode);

// Loads the tables (copies them in) and rebuilds the palette.
void DisplayTablesSet(const uint8_t red[256], const uint8_t green[256], const uint8_t blue[256]);
void DisplayTablesGet(uint8_t red[256], uint8_t green[256], uint8_t blue[256]);

// A colour after the tables, as 0xRRGGBB.
uint32_t DisplayColor(int32_t red, int32_t green, int32_t blue);

// Refreshes the rectangle x0..x1, y0..y1 (inclusive, display pixels, y from
// the top of the view) of the record's display copy from `image`. The whole
// view reallocates `display` (viewWidth by viewHeight; kind of the image, or
// colour when a mask overlay is shown); a part keeps the display that
// exists. `wait` shows the wait cursor meanwhile. `mask` is the overlay's
// gray image or null. Result 0, or 1 when memory runs out.
int32_t DisplayUpdate(const Image& image, ImageWindow& record, const Image* mask, int32_t x0,
                      int32_t y0, int32_t x1, int32_t y1, bool wait);
int32_t DisplayUpdateAll(ImageWindow& record, const Image* mask);

// The palette: entries 0..19 the gray ramp through the tables, 20..235 the
// cube, as 0xRRGGBB.
const std::vector<uint32_t>& ScreenPalette();

// Dithers one row of a gray display copy into palette indices 0..19.
// `row` is the row's index in `display` (it picks the dither matrix row).
void DitherGrayRow(const uint8_t* pixels, int32_t width, int32_t row, uint8_t* indices);
// Dithers one row of a colour display copy (blue, green, red) into palette
// indices 20..235.
void DitherColorRow(const uint8_t* pixels, int32_t width, int32_t row, uint8_t* indices);
// The 8 by 8 cell of palette indices with which a colour is filled in
// palette mode; false for black, 0x808080, 0xC0C0C0 and white, which are
// filled plain.
bool DitherFillCell(uint32_t rgb, uint8_t cell[64]);

// The histogram window: for bin i, the line's x and its top y in a client
// of the given size; a peak of 0 is first set to 1 in the record itself.
struct HistogramLine {
    int32_t x, bottom, top;
};
std::vector<HistogramLine> HistogramLines(Image& histogram, int32_t clientWidth,
                                          int32_t clientHeight);

}  // namespace lv
