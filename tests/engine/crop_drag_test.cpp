// The crop box under the mouse and the margins' arrows: corner and centre
// drags on a 100 by 80 picture, the refit to proportions inside it, the
// one-pixel steps, and the lengths the panel shows.
#include "geometry/crop_drag.h"

#include <gtest/gtest.h>

namespace lv {
namespace {

constexpr int32_t kW = 100, kH = 80;

void ExpectBox(const CropBox& b, int32_t x1, int32_t y1, int32_t x2, int32_t y2)
{
    EXPECT_EQ(b.x1, x1);
    EXPECT_EQ(b.y1, y1);
    EXPECT_EQ(b.x2, x2);
    EXPECT_EQ(b.y2, y2);
}

TEST(CropDrag, CornerFollowsTheTravelPastTheOppositeCornerAndStopsAtTheEdges)
{
    const CropBox box{20, 60, 50, 30};
    CropDrag drag;
    EXPECT_FALSE(crop_drag_start(drag, box, kCropHandleNone, 0, 0));
    // Pressed a pixel off the corner (20, 60): the corner keeps that offset.
    ASSERT_TRUE(crop_drag_start(drag, box, kCropCorner11, 21, 59));
    const CropBox past = crop_drag_to(drag, 71, 19, kW, kH, 0.0);
    ExpectBox(past, 70, 20, 50, 30);
    // Reversed both ways; the margins see the box in order.
    const CropMargins m = crop_margins(past, kW, kH);
    EXPECT_EQ(m.left, 50);
    EXPECT_EQ(m.right, 29);
    EXPECT_EQ(m.top, 49);
    EXPECT_EQ(m.bottom, 20);
    ExpectBox(crop_drag_to(drag, 121, -41, kW, kH, 0.0), 99, 0, 50, 30);
    // The drag works from the box at the press, not from the last move.
    ExpectBox(crop_drag_to(drag, 21, 59, kW, kH, 0.0), 20, 60, 50, 30);
}

TEST(CropDrag, CentreMovesTheWholeBoxAndStopsAtTheEdges)
{
    CropDrag drag;
    ASSERT_TRUE(crop_drag_start(drag, CropBox{20, 60, 50, 30}, kCropCenter, 35, 45));
    ExpectBox(crop_drag_to(drag, 105, 50, kW, kH, 0.0), 69, 65, 99, 35);
    ExpectBox(crop_drag_to(drag, -65, -55, kW, kH, 0.0), 0, 30, 30, 0);
    // Corners given the other way round stop at the same edges.
    ASSERT_TRUE(crop_drag_start(drag, CropBox{50, 30, 20, 60}, kCropCenter, 35, 45));
    ExpectBox(crop_drag_to(drag, 105, 50, kW, kH, 0.0), 99, 35, 69, 65);
}

TEST(CropDrag, ProportionsRefitTheDraggedBoxInsideThePicture)
{
    // Square: the corner (99, 0) dragged to (59, 40) gives a diagonal of
    // sqrt(59^2 + 39^2) = 70.72, so sides of RoundToInt(70.72 / sqrt 2) = 50.
    CropDrag drag;
    ASSERT_TRUE(crop_drag_start(drag, CropBox{0, 79, 99, 0}, kCropCorner22, 99, 0));
    ExpectBox(crop_drag_to(drag, 59, 40, kW, kH, 1.0), 0, 79, 50, 29);

    // The whole picture squared: the diagonal asks for 90, which reaches
    // past the bottom, so the square shrinks to the 79 rows below the top.
    const CropBox square = crop_fit(CropBox{0, 79, 99, 0}, kCropCorner22, 1.0, kW, kH);
    ExpectBox(square, 0, 79, 79, 0);
    // 3 by 2 across: 105 by 70 from the diagonal, cut to the 99 columns
    // there are, with RoundToInt(99 / 1.5) = 66 rows.
    const CropBox wide = crop_fit(CropBox{0, 79, 99, 0}, kCropCorner22, 1.5, kW, kH);
    ExpectBox(wide, 0, 79, 99, 13);
    // The module's own refit leaves both as they are.
    ExpectBox(crop_constrain(square, kCropCorner22, 1.0), 0, 79, 79, 0);
    ExpectBox(crop_constrain(wide, kCropCorner22, 1.5), 0, 79, 99, 13);
    // A corner with no room on its side turns to the other: the box
    // (99, 40)-(99, 40) squared from (99, 40) grows to the left.
    ExpectBox(crop_fit(CropBox{99, 40, 99, 40}, kCropCorner22, 1.0, kW, kH), 99, 40, 98, 41);
    // Arbitrary only keeps the box inside.
    ExpectBox(crop_fit(CropBox{-5, 90, 40, 10}, kCropCorner22, 0.0, kW, kH), 0, 79, 40, 10);
}

TEST(CropDrag, MarginStepsMoveOneSide)
{
    const CropBox whole{0, 79, 99, 0};
    ExpectBox(crop_step_side(whole, kCropLeft, 1, kW, kH, 0.0), 1, 79, 99, 0);
    ExpectBox(crop_step_side(whole, kCropLeft, -1, kW, kH, 0.0), 0, 79, 99, 0);
    ExpectBox(crop_step_side(whole, kCropTop, 1, kW, kH, 0.0), 0, 78, 99, 0);
    ExpectBox(crop_step_side(whole, kCropBottom, 1, kW, kH, 0.0), 0, 79, 99, 1);
    // A side stops at the opposite one.
    ExpectBox(crop_step_side(CropBox{40, 10, 40, 10}, kCropRight, 1, kW, kH, 0.0), 40, 10, 40, 10);
    // Square: a narrower box is as much lower, under the same top; a lower
    // top takes the width with it and keeps the bottom.
    const CropBox square{0, 79, 79, 0};
    ExpectBox(crop_step_side(square, kCropRight, 1, kW, kH, 1.0), 0, 79, 78, 1);
    ExpectBox(crop_step_side(square, kCropTop, 1, kW, kH, 1.0), 0, 78, 78, 0);
    // 1 by 2 upright, 10 by 20: 19 rows would bring RoundToInt(9.5) = 10
    // columns back, so the width steps to 9 and the height follows to 18.
    ExpectBox(crop_step_side(CropBox{0, 20, 10, 0}, kCropTop, 1, kW, kH, 0.5), 0, 19, 9, 1);
    // A square wider than the picture is high is refused.
    ExpectBox(crop_step_side(square, kCropRight, -1, kW, kH, 1.0), 0, 79, 79, 0);
}

TEST(CropDrag, LengthsInEachUnit)
{
    EXPECT_EQ(crop_length_text(150, kUnitsPixels, 100.0), "150");
    EXPECT_EQ(crop_length_text(150, kUnitsInches, 100.0), "1.50");
    EXPECT_EQ(crop_length_text(100, kUnitsMillimetres, 100.0), "25.40");
    EXPECT_EQ(crop_length_text(100, kUnitsCentimetres, 300.0), "0.85");
}

}  // namespace
}  // namespace lv
