#include "image/display.h"

#include <gtest/gtest.h>

#include <cstring>

#include "image/pixel.h"
#include "support/scripted_frontend.h"

namespace lv {
namespace {

using Bytes = std::vector<int>;

// Shows the whole picture at a zoom, as a fresh window at that zoom would.
void ShowWhole(ImageWindow& w, int32_t zoom)
{
    const auto length = [zoom](int32_t n) { return zoom > 0 ? n * zoom : (n - zoom - 1) / -zoom; };
    w.zoom = zoom;
    w.viewWidth = length(w.image.width);
    w.viewHeight = length(w.image.height);
    w.sourceLeft = w.sourceTop = 0;
    w.sourceRight = w.image.width - 1;
    w.sourceBottom = w.image.height - 1;
}

// Bytes from..to - 1 of row r.
Bytes Span(const Image& d, int32_t r, int32_t from, int32_t to)
{
    return Bytes(d.rows[r] + from, d.rows[r] + to);
}

// Gray picture whose pixel in row r, column x is 16 * r + x.
void GrayRamp(Image& image, int32_t width, int32_t height)
{
    ASSERT_EQ(ImageAlloc(image, kImageGray, width, height, 72.0), 0);
    for (int32_t r = 0; r < height; ++r)
        for (int32_t x = 0; x < width; ++x) image.rows[r][x] = static_cast<uint8_t>(16 * r + x);
}

// Every table 255 - v for the life of a test, so where the tables act shows.
struct InvertedTables {
    InvertedTables()
    {
        uint8_t t[256];
        for (int i = 0; i < 256; ++i) t[i] = static_cast<uint8_t>(255 - i);
        DisplayTablesSet(t, t, t);
    }
    ~InvertedTables() { DisplayTablesIdentity(CurrentDisplayTables()); }
};

TEST(DisplayUpdate, GrayAtEachZoomFromTheBottomUp)
{
    ImageWindow w;
    GrayRamp(w.image, 10, 4);
    ShowWhole(w, 1);
    test::ScriptedFrontEnd front;
    ScopedFrontEnd scope(front);
    ASSERT_EQ(DisplayUpdateAll(w, nullptr), 0);
    EXPECT_EQ(w.display.kind, kImageGray);
    EXPECT_EQ(Span(w.display, 0, 0, 10), (Bytes{0, 1, 2, 3, 4, 5, 6, 7, 8, 9}));

    // 1:3 of a width that is not a multiple of 3: four columns, the last is column 9.
    ShowWhole(w, -3);
    ASSERT_EQ(DisplayUpdateAll(w, nullptr), 0);
    ASSERT_EQ(w.display.width, 4);
    EXPECT_EQ(Span(w.display, 0, 0, 4), (Bytes{0, 3, 6, 9}));
    EXPECT_EQ(Span(w.display, 1, 0, 4), (Bytes{48, 51, 54, 57}));

    // 3:1 scrolled to columns 2..5 and rows 1..2 from the top (image rows 2
    // and 1): display row 0, the bottom of the view, shows image row 1.
    w.zoom = 3, w.viewWidth = 12, w.viewHeight = 6;
    w.sourceLeft = 2, w.sourceRight = 5, w.sourceTop = 1, w.sourceBottom = 2;
    ASSERT_EQ(DisplayUpdate(w.image, w, nullptr, 0, 0, 11, 5, false), 0);
    EXPECT_EQ(front.waitCursors, 2);  // none for the call without wait
    EXPECT_EQ(front.arrowCursors, 2);
    for (int r = 0; r < 6; ++r) {
        const int v = r < 3 ? 18 : 34;
        EXPECT_EQ(Span(w.display, r, 0, 12),
                  (Bytes{v, v, v, v + 1, v + 1, v + 1, v + 2, v + 2, v + 2, v + 3, v + 3, v + 3}));
    }
    // A part whose left edge is inside a zoomed pixel; y 1..4 are display rows 4..1.
    for (int r = 0; r < 6; ++r) std::memset(w.display.rows[r], 0, 12);
    ASSERT_EQ(DisplayUpdate(w.image, w, nullptr, 4, 1, 10, 4, false), 0);
    EXPECT_EQ(Span(w.display, 1, 4, 12), (Bytes{19, 19, 20, 20, 20, 21, 21, 0}));
    EXPECT_EQ(Span(w.display, 4, 4, 12), (Bytes{35, 35, 36, 36, 36, 37, 37, 0}));
}

TEST(DisplayUpdate, BinaryAndColourAtEachZoom)
{
    ImageWindow b;
    ASSERT_EQ(ImageAlloc(b.image, kImageBinary, 10, 2, 72.0), 0);
    std::memset(b.image.rows[1], 0, 4);
    b.image.rows[0][0] = 0x90, b.image.rows[0][1] = 0x40;  // row 0: columns 0, 3 and 9 set
    const auto bits = [](const Image& d, int32_t r) {
        Bytes v;
        for (int32_t x = 0; x < d.width; ++x) v.push_back(GetBit(d.rows[r], x));
        return v;
    };
    ShowWhole(b, 1);
    ASSERT_EQ(DisplayUpdateAll(b, nullptr), 0);
    EXPECT_EQ(bits(b.display, 0), (Bytes{1, 0, 0, 1, 0, 0, 0, 0, 0, 1}));
    // Reduced views are laid from the top: the one row of 1:3 is image row 1.
    ShowWhole(b, -3);
    ASSERT_EQ(DisplayUpdateAll(b, nullptr), 0);
    EXPECT_EQ(bits(b.display, 0), (Bytes{0, 0, 0, 0}));
    ShowWhole(b, 3);
    ASSERT_EQ(DisplayUpdateAll(b, nullptr), 0);
    const Bytes row0 = bits(b.display, 0);
    EXPECT_EQ(Bytes(row0.begin() + 6, row0.begin() + 12), (Bytes{0, 0, 0, 1, 1, 1}));
    EXPECT_EQ(row0[29], 1);
    EXPECT_EQ(bits(b.display, 2), row0);
    EXPECT_EQ(bits(b.display, 3), Bytes(30, 0));

    ImageWindow c;
    ASSERT_EQ(ImageAlloc(c.image, kImageColor, 4, 2, 72.0), 0);
    for (int i = 0; i < 12; ++i) c.image.rows[0][i] = i, c.image.rows[1][i] = 100 + i;
    ShowWhole(c, -3);
    ASSERT_EQ(DisplayUpdateAll(c, nullptr), 0);
    ASSERT_EQ(c.display.height, 1);
    EXPECT_EQ(Span(c.display, 0, 0, 6), (Bytes{100, 101, 102, 109, 110, 111}));
    ShowWhole(c, 3);
    ASSERT_EQ(DisplayUpdateAll(c, nullptr), 0);
    EXPECT_EQ(c.display.rows[5][3 * 11 + 2], 111);  // top right: row 1, column 3, red
    EXPECT_EQ(c.display.rows[2][3 * 4], 3);         // row 0, column 1, blue

    // Taller than one block (216 rows of 300 bytes): rows stay in order across blocks.
    ASSERT_EQ(ImageAlloc(c.image, kImageColor, 100, 700, 72.0), 0);
    for (int r = 0; r < 700; ++r) std::memset(c.image.rows[r], r % 251, 300);
    ShowWhole(c, 1);
    ASSERT_EQ(DisplayUpdateAll(c, nullptr), 0);
    EXPECT_EQ(c.display.blockCount, 4);
    for (int r : {0, 215, 216, 699}) EXPECT_EQ(c.display.rows[r][299], r % 251) << r;
    ShowWhole(c, -2);
    ASSERT_EQ(DisplayUpdateAll(c, nullptr), 0);
    // 350 rows from the top: display row r shows image row 699 - 2 * (349 - r).
    for (int r : {0, 108, 349}) EXPECT_EQ(c.display.rows[r][0], (2 * r + 1) % 251) << r;
}

TEST(DisplayUpdate, TablesAndOverlayOrderByKind)
{
    InvertedTables inverted;
    Image mask;
    ASSERT_EQ(ImageAlloc(mask, kImageGray, 2, 1, 72.0), 0);
    mask.rows[0][0] = 200, mask.rows[0][1] = 0;
    const uint8_t t = Mul8Table[200][128];

    ImageWindow c;  // colour: the blend, then the tables
    ASSERT_EQ(ImageAlloc(c.image, kImageColor, 2, 1, 72.0), 0);
    for (int i = 0; i < 6; ++i) c.image.rows[0][i] = static_cast<uint8_t>(10 * (i % 3 + 1));
    ShowWhole(c, 1);
    ASSERT_EQ(DisplayUpdateAll(c, nullptr), 0);
    EXPECT_EQ(Span(c.display, 0, 0, 3), (Bytes{245, 235, 225}));
    EXPECT_EQ(c.image.rows[0][0], 10);
    c.maskOpacity = 128;  // overlay colour red, the default
    ASSERT_EQ(DisplayUpdateAll(c, &mask), 0);
    EXPECT_EQ(Span(c.display, 0, 0, 6), (Bytes{255 - Lerp8(10, 0, t), 255 - Lerp8(20, 0, t),
                                               255 - Lerp8(30, 255, t), 245, 235, 225}));

    ImageWindow g;  // gray: the tables, then the blend, in a colour display
    GrayRamp(g.image, 2, 1);
    g.image.rows[0][0] = 30;
    ShowWhole(g, 1);
    g.maskOpacity = 128;
    ASSERT_EQ(DisplayUpdateAll(g, &mask), 0);
    EXPECT_EQ(g.display.kind, kImageColor);
    EXPECT_EQ(Span(g.display, 0, 0, 3),
              (Bytes{Lerp8(225, 0, t), Lerp8(225, 0, t), Lerp8(225, 255, t)}));
    g.maskOpacity = -1;  // the mask alone, through the tables
    ASSERT_EQ(DisplayUpdateAll(g, &mask), 0);
    EXPECT_EQ(Span(g.display, 0, 0, 6), (Bytes{55, 55, 55, 255, 255, 255}));
    Image small;
    ASSERT_EQ(ImageAlloc(small, kImageGray, 1, 1, 72.0), 0);
    ASSERT_EQ(DisplayUpdateAll(g, &small), 0);  // another size: no overlay
    EXPECT_EQ(g.display.kind, kImageGray);

    ImageWindow b;  // binary: no tables at all
    ASSERT_EQ(ImageAlloc(b.image, kImageBinary, 2, 1, 72.0), 0);
    b.image.rows[0][0] = 0x80;  // column 0 white, column 1 black
    ShowWhole(b, 1);
    b.maskOpacity = 128;
    b.overlayRed = 0, b.overlayBlue = 255;
    ASSERT_EQ(DisplayUpdateAll(b, &mask), 0);
    EXPECT_EQ(Span(b.display, 0, 0, 6), (Bytes{255, Lerp8(255, 0, t), Lerp8(255, 0, t), 0, 0, 0}));
    b.maskOpacity = -1;
    ASSERT_EQ(DisplayUpdateAll(b, &mask), 0);
    EXPECT_EQ(Span(b.display, 0, 0, 3), (Bytes{200, 200, 200}));

    EXPECT_EQ(DisplayColor(0, 255, 16), 0xFF00EFu);
    EXPECT_EQ(ScreenPalette()[1], 0xF2F2F2u);  // 255 - 1 * 255 / 19: the ramp is mapped
    EXPECT_EQ(ScreenPalette()[20 + 1 + 6 * 2 + 36 * 3], 0x336699u);  // the cube is not
}

TEST(DisplayUpdate, BadRecordsStayInBounds)
{
    ImageWindow w;
    GrayRamp(w.image, 4, 4);
    ShowWhole(w, 1);
    w.viewWidth = 0;
    EXPECT_EQ(DisplayUpdateAll(w, nullptr), 0);
    EXPECT_EQ(w.display.kind, kImageEmpty);
    // A source rectangle hanging off the picture repeats its edge pixels.
    w.viewWidth = w.viewHeight = 6;
    w.sourceLeft = -1, w.sourceBottom = 4;
    ASSERT_EQ(DisplayUpdateAll(w, nullptr), 0);
    EXPECT_EQ(Span(w.display, 0, 0, 6), (Bytes{0, 0, 1, 2, 3, 3}));
    EXPECT_EQ(Span(w.display, 5, 0, 6), (Bytes{48, 48, 49, 50, 51, 51}));
    // A part of a display of the wrong size redoes the whole view.
    w.viewWidth = 3;
    ASSERT_EQ(DisplayUpdate(w.image, w, nullptr, 1, 1, 1, 1, false), 0);
    EXPECT_EQ(w.display.width, 3);
}

TEST(Dither, RowsCellsAndPalette)
{
    ASSERT_EQ(ScreenPalette().size(), 236u);
    EXPECT_EQ(ScreenPalette()[235], 0xFFFFFFu);

    // 13 is 13 above ramp step 0; the thresholds at (0, 0) and (7, 0) are 0 and 13.
    const uint8_t gray[2] = {13, 255};
    uint8_t out[5];
    DitherGrayRow(gray, 2, 0, out);
    EXPECT_EQ(Bytes(out, out + 2), (Bytes{1, 19}));
    DitherGrayRow(gray, 1, 7, out);
    EXPECT_EQ(out[0], 0);

    // Red 100 is 49 above cube step 1; row 11 uses matrix row 3, threshold 48
    // at column 0; row 7 has exactly 49 at column 4.
    uint8_t colour[15] = {};  // five pixels: blue, green, red
    colour[2] = colour[14] = 100;
    DitherColorRow(colour, 5, 11, out);
    EXPECT_EQ(Bytes(out, out + 2), (Bytes{22, 20}));
    DitherColorRow(colour, 5, 7, out);
    EXPECT_EQ(out[4], 21);

    uint8_t cell[64];
    for (uint32_t plain : {0x000000u, 0x808080u, 0xC0C0C0u, 0xFFFFFFu})
        EXPECT_FALSE(DitherFillCell(plain, cell)) << plain;
    ASSERT_TRUE(DitherFillCell(0x640000, cell));
    EXPECT_EQ(cell[3 * 8 + 0], 22);
    EXPECT_EQ(cell[7 * 8 + 4], 21);
}

TEST(Histogram, LinesAndPeak)
{
    Image h;
    ASSERT_EQ(ImageAlloc(h, kImageHistogram, 256, 1, 72.0), 0);
    std::memset(h.rows[0], 0, 1028);
    std::vector<HistogramLine> lines = HistogramLines(h, 208, 108);  // plot 200 by 100
    uint32_t peak = 0;
    std::memcpy(&peak, h.rows[0], 4);
    EXPECT_EQ(peak, 1u);
    ASSERT_EQ(lines.size(), 256u);
    EXPECT_EQ(lines[128].x, 103);
    EXPECT_EQ(lines[0].bottom, 103);
    EXPECT_EQ(lines[0].top, 103);

    const uint32_t counts[3] = {4000000000u, 4000000000u, 3000000000u};  // peak, bin 0, bin 1
    std::memcpy(h.rows[0], counts, sizeof counts);
    lines = HistogramLines(h, 208, 108);
    EXPECT_EQ(lines[0].top, 4);
    EXPECT_EQ(lines[1].top, 100 - 74 + 3);  // 99 * 3 / 4, in 64 bits
}

}  // namespace
}  // namespace lv
