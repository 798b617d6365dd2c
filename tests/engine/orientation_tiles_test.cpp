// The Mirror/Rotate panel's grid: where the tiles lie, which one a point
// hits, and the eight pictures made from one thumbnail.
#include "geometry/orientation_tiles.h"

#include <gtest/gtest.h>

#include "image/display.h"
#include "image/display_tables.h"
#include "shell/errors.h"

namespace lv {
namespace {

TEST(OrientationTiles, GridCornersAndHits)
{
    // Frames of 6: a square every 128 + 3 * 6 = 146 pixels, the first at 6.
    int32_t width = 0, height = 0, left = 0, top = 0;
    orientation_grid_size(6, width, height);
    EXPECT_EQ(width, 578);
    EXPECT_EQ(height, 286);
    orientation_tile_corner(205, 6, left, top);
    EXPECT_EQ(left, 152);
    EXPECT_EQ(top, 152);
    // The squares' own pixels hit; their frames, the gaps and beyond do not.
    const int32_t hits[][3] = {{6, 6, 200},    {133, 133, 200}, {134, 6, 0},   {146, 50, 0},
                               {152, 50, 201}, {444, 6, 203},   {6, 152, 204}, {571, 279, 207},
                               {572, 279, 0},  {571, 280, 0},   {700, 50, 0},  {-1, 50, 0}};
    for (const auto& h : hits)
        EXPECT_EQ(orientation_at(h[0], h[1], 6), h[2]) << h[0] << "," << h[1];
}

TEST(OrientationTiles, PicturesTurnOneMappedThumbnail)
{
    // 4 by 2 colour pixels (blue x, green y, red 10 + x) under inverting
    // tables: a 128 by 64 thumbnail with its colours mapped once, turned.
    Image source;
    ASSERT_EQ(ImageAlloc(source, kImageColor, 4, 2, 300.0), 0);
    for (int32_t y = 0; y < 2; ++y)
        for (int32_t x = 0; x < 4; ++x) {
            uint8_t* p = source.rows[y] + 3 * x;
            p[0] = static_cast<uint8_t>(x);
            p[1] = static_cast<uint8_t>(y);
            p[2] = static_cast<uint8_t>(10 + x);
        }
    uint8_t inverted[256];
    for (int i = 0; i < 256; ++i) inverted[i] = static_cast<uint8_t>(255 - i);
    DisplayTablesSet(inverted, inverted, inverted);
    Image pictures[kOrientTileCount];
    const int32_t code = make_orientation_pictures(source, pictures);
    DisplayTablesIdentity(CurrentDisplayTables());
    ASSERT_EQ(code, kOk);
    for (int32_t i = 0; i < kOrientTileCount; ++i) {
        EXPECT_EQ(pictures[i].width, i % 2 ? 64 : 128) << i;
        EXPECT_EQ(pictures[i].height, i % 2 ? 128 : 64) << i;
    }
    // Where the source's bottom left pixel (255, 255, 245 after the tables)
    // and its top right one (252, 254, 242) go.
    const int32_t bl[3] = {255, 255, 245}, tr[3] = {252, 254, 242};
    const struct {
        int32_t picture, column, row;
        const int32_t* bgr;
    } at[] = {{0, 127, 63, tr}, {1, 0, 127, bl}, {3, 63, 0, bl}, {7, 63, 127, tr}};
    for (const auto& a : at)
        for (int32_t c = 0; c < 3; ++c)
            EXPECT_EQ(pictures[a.picture].rows[a.row][3 * a.column + c], a.bgr[c]) << a.picture;

    // A solid colour has nothing to show; the older pictures are dropped.
    Image solid;
    ASSERT_EQ(ImageAlloc(solid, kImageSolid, 1, 1, 0.0), 0);
    EXPECT_EQ(make_orientation_pictures(solid, pictures), kOk);
    for (const Image& picture : pictures) EXPECT_EQ(picture.rows, nullptr);
}

}  // namespace
}  // namespace lv
