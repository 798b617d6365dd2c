// Row readers and the row writer that let every transformation run both for
// real and as a zoomed preview.
//
// A worker only ever sees plain rows of `lineWidth` pixels. LineInput hands it
// source rows (decimated when the preview zooms out), LineWindow hands it a
// row with its neighbours, and LineOutput takes its rows and writes them to
// the destination, replicating pixels when the preview zooms in and passing
// colour through the display tables when the destination is a display copy.
//
// Each record is reset first, so that one clean-up path closes it whether or
// not it was opened. The destructors free what the records own as well.
#pragma once

#include <cstdint>
#include <memory>

#include "image/display_tables.h"
#include "image/image.h"

namespace lv {

struct LineInput {
    const Image* image = nullptr;
    int32_t x = 0;     // first source column
    int32_t y = 0;     // next source row to read
    int32_t step = 1;  // source pixels and rows per output pixel and row
    int32_t width = 0;
    std::unique_ptr<uint8_t[]> buffer;   // decimation row; null when rows come in place
    std::unique_ptr<uint8_t[]> scratch;  // a spare row of `width` bytes for the worker
};

void LineInputReset(LineInput& input);
// `zoom` is the window's signed zoom; a negative zoom -n reads every n-th
// pixel and row. Kinds 1 to 3 only (else 14). Result 0, 1 or 14.
int32_t LineInputOpen(const Image& image, int32_t x, int32_t y, int32_t zoom, int32_t width,
                      LineInput& input);
// The next row: `width` pixels, one byte each for kinds 1 and 2 (a 1-bit
// source reads as 0 and 255) and three for kind 3. Past the top the top row
// repeats. A pointer into the image itself must not be written through.
const uint8_t* LineInputNext(LineInput& input);
void LineInputClose(LineInput& input);

struct LineWindow {
    const Image* image = nullptr;
    int32_t x = 0;
    int32_t step = 1;
    int32_t rowBytes = 0;  // bytes in one window row
    int32_t radius = 0;    // rows and columns of context on each side
    int32_t y = 0;         // center row of the next window
    int32_t mode = 0;      // 0 direct, 1 copied at full step, 2 copied and gathered
    int32_t advance = 0;   // bytes from one output position to the next
    int32_t width = 0;     // output positions per row
    std::unique_ptr<const uint8_t*[]> windowRows;           // 2 * radius + 1 entries
    std::unique_ptr<std::unique_ptr<uint8_t[]>[]> buffers;  // the owned rows of modes 1 and 2
};

void LineWindowReset(LineWindow& window);
int32_t LineWindowOpen(const Image& image, int32_t x, int32_t y, int32_t zoom, int32_t width,
                       int32_t radius, LineWindow& window);
// The window around the next row: entry `radius` is the center row, and the
// n = 2 * radius + 1 neighbours of output pixel k start at byte k * advance.
// Rows and columns beyond the picture repeat its edge.
const uint8_t* const* LineWindowNext(LineWindow& window);
void LineWindowClose(LineWindow& window);

struct LineOutput {
    Image* image = nullptr;
    int32_t replicate = 1;  // destination pixels and rows per worker pixel and row
    int32_t x0 = 0;         // first destination column
    int32_t x1 = 0;         // last destination column, inclusive
    int32_t stride = 0;
    int32_t y = 0;  // next destination row
    int32_t byteOffset = 0;
    std::unique_ptr<uint8_t[]> row;  // the worker's row when replicating; else null
    int32_t raw = 1;                 // zero: colour passes through the display tables
    const DisplayTables* tables = nullptr;
    std::unique_ptr<uint8_t[]> spill;  // takes a row written past the top, which is dropped
};

void LineOutputReset(LineOutput& output);
// `zoom` above 1 replicates each worker pixel and row zoom times. Columns
// x0..x1 are clipped to the destination. With `tables` null the program's
// current display tables are used. Kinds 1 to 3 only (else 14).
int32_t LineOutputOpen(Image& image, int32_t zoom, int32_t x0, int32_t x1, int32_t y, int32_t raw,
                       LineOutput& output, const DisplayTables* tables = nullptr);
// Where the worker writes its next row. A 1-bit row is written packed.
uint8_t* LineOutputRow(LineOutput& output);
// Finishes the row and moves on; does nothing once past the top row.
void LineOutputFlush(LineOutput& output);
void LineOutputClose(LineOutput& output);

}  // namespace lv
