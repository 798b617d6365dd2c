#include "image/zoom.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

namespace lv {
namespace {

using V = std::vector<int32_t>;

// A workspace of 1000 x 800 where a picture fits up to 974 x 754.
ZoomMetrics Metrics()
{
    ZoomMetrics m;
    m.workspaceWidth = 1000, m.workspaceHeight = 800;
    m.cxChildBorder = 10, m.cyChildBorder = 30;
    m.cxVScroll = 16, m.cyHScroll = 16;
    m.borderWidth = 8, m.margin = 5, m.controlHeight = 24;
    return m;
}

TEST(Zoom, StepsLengthsAndTitles)
{
    EXPECT_EQ(V({ZoomStepUp(-2), ZoomStepDown(1), ZoomStepUp(1), ZoomStepDown(-2)}),
              V({1, -2, 2, -3}));
    EXPECT_EQ(V({ZoomStepUp(kMaxZoom), ZoomStepDown(kMinZoom), ZoomStepUp(INT32_MAX)}),
              V({kMaxZoom, kMinZoom, kMaxZoom}));
    EXPECT_EQ(V({ZoomClamp(0), ZoomClamp(-1), ZoomClamp(INT32_MIN)}), V({1, 1, kMinZoom}));
    // A reduced picture rounds up.
    EXPECT_EQ(V({ZoomedLength(10, -3), ZoomedLength(9, -3), ZoomedLength(7, 3)}), V({4, 3, 21}));
    EXPECT_EQ(V({ZoomedLength(-4, 2), ZoomedLength(INT32_MAX, kMaxZoom)}), V({0, INT32_MAX}));

    ImageWindow r;
    r.slot = 2;
    ASSERT_EQ(ImageAlloc(r.image, kImageGray, 2, 2, 72.0), 0);
    EXPECT_EQ(WindowTitle(r), "Untitled 3 (1:1)");
    r.fileName = "/photos/a.tif";
    r.zoom = -4;
    EXPECT_EQ(WindowTitle(r), "/photos/a.tif (1:4)");
    r.windowKind = kWindowPreview;
    EXPECT_EQ(WindowTitle(r), "Preview (1:4)");  // its ratio even before its first run
    EXPECT_EQ(ZoomTitle("Color", kImageSolid, 3), "Color");
}

TEST(Zoom, SizeStep)
{
    const ZoomMetrics m = Metrics();
    ImageWindow r;
    auto step = [&](int32_t w, int32_t h, int32_t client, bool resize, bool normal) {
        const WindowPlacement p =
            ZoomSizeStep(r, {kImageGray, w, h}, client, client, resize, normal, 40, 50, m);
        return V{p.resized, p.moved, p.x, p.y, p.width, p.height, r.viewWidth, r.viewHeight};
    };
    // Smaller than the window: shrunk round the picture where it stands.
    EXPECT_EQ(step(100, 50, 400, true, true), V({1, 0, 40, 50, 126, 96, 100, 50}));
    // Larger, but within the workspace: centered there.
    EXPECT_EQ(step(600, 500, 400, true, true), V({1, 1, 187, 127, 626, 546, 600, 500}));
    // Exactly the available size, or not in the normal state: left alone.
    EXPECT_EQ(step(384, 384, 400, true, true), V({0, 0, 0, 0, 0, 0, 384, 384}));
    EXPECT_EQ(step(100, 50, 400, true, false), V({0, 0, 0, 0, 0, 0, 100, 50}));
    // Kept size with bars; a vertical bar forcing the horizontal one.
    EXPECT_EQ(step(1000, 300, 416, false, true)[7], 300);
    EXPECT_EQ(step(395, 401, 416, false, true)[6], 384);
    EXPECT_EQ(step(401, 395, 416, false, true)[7], 384);
    EXPECT_EQ(step(2000, 2000, 400, true, true), V({0, 0, 0, 0, 0, 0, 368, 368}));
    EXPECT_EQ(step(100, 100, -50, false, true)[6], 0);
}

TEST(Zoom, ScrollStepSnapsAndDerivesTheSource)
{
    ImageWindow r;
    const ZoomSubject s{kImageGray, 100, 80};
    auto view = [&] {
        return V{r.viewLeft, r.viewTop, r.sourceLeft, r.sourceTop, r.sourceRight, r.sourceBottom};
    };
    r.zoom = 3;  // 300 x 240 zoomed
    r.viewWidth = 100, r.viewHeight = 50;
    ZoomScrollStep(r, s, true, 50, 40);
    EXPECT_EQ(V({r.scrollRangeX, r.scrollRangeY}), V({200, 190}));
    EXPECT_EQ(view(), V({99, 90, 33, 30, 65, 45}));
    for (int32_t a = 0; a < 7; ++a)
        EXPECT_EQ(ScrollTo(r.viewLeft, ScrollAction(a), 101, 100, 200, 3) % 3, 0);

    // Without a point the position keeps its fraction of the range.
    r.zoom = 4;
    ZoomScrollStep(r, s, false, 0, 0);
    EXPECT_EQ(V({r.viewLeft, r.viewTop}), V({148, 124}));

    // Reduced: from a picture that fitted, the view goes to the middle; right
    // and bottom stop at the picture.
    r.zoom = -3;  // 34 x 27 zoomed
    r.viewWidth = 20, r.viewHeight = 10;
    r.scrollRangeX = r.scrollRangeY = 0;
    ZoomScrollStep(r, s, false, 0, 0);
    EXPECT_EQ(view(), V({7, 8, 21, 24, 80, 53}));
    ScrollView(r, s, 14, 99);
    EXPECT_EQ(view(), V({14, 17, 42, 51, 99, 79}));

    EXPECT_EQ(ScrollTo(20, ScrollAction::LineUp, 0, 80, 100, 1), 10);
    EXPECT_EQ(ScrollTo(50, ScrollAction::PageDown, 0, 80, 100, 1), 100);
    EXPECT_EQ(ScrollTo(50, ScrollAction::Thumb, 58, 80, 100, 3), 57);
    EXPECT_EQ(ScrollTo(50, ScrollAction::End, 0, -5, -7, 1), 0);
}

TEST(Zoom, CenteredPictureAndMapping)
{
    const ZoomMetrics m = Metrics();
    ImageWindow r;
    const ZoomSubject s{kImageGray, 40, 30};
    r.zoom = 2;
    ZoomSizeStep(r, s, 300, 200, false, true, 0, 0, m);
    ZoomScrollStep(r, s, false, 0, 0);
    ZoomCenterStep(r, 300, 200, m);
    EXPECT_EQ(V({r.originX, r.originY}), V({110, 70}));
    auto toImage = [&](const ZoomSubject& subject, const V& c, bool clamp) {
        int32_t x, y;
        ClientToImage(r, subject, 300, 200, m, c[0], c[1], x, y, clamp);
        return V{x, y};
    };
    auto toClient = [&](const ZoomSubject& subject, const V& p) {
        int32_t cx, cy;
        ImageToClient(r, subject, 300, 200, m, p[0], p[1], cx, cy);
        return V{cx, cy};
    };
    // Clicks outside the picture map to the nearest edge pixel when clamped.
    EXPECT_EQ(toImage(s, {5, 5}, true), V({0, 29}));
    EXPECT_EQ(toImage(s, {299, 199}, true), V({39, 0}));
    EXPECT_EQ(toImage(s, {5, 5}, false), V({-52, 61}));
    EXPECT_EQ(toClient(s, {0, 29}), V({110, 70}));

    // Round trips in a scrolled view: image pixels survive at n:1, client
    // points at 1:n.
    const ZoomSubject big{kImageColor, 1001, 777};
    for (int32_t zoom : {1, 3, -2, -5}) {
        r.zoom = zoom;
        ZoomSizeStep(r, big, 300, 200, false, true, 0, 0, m);
        ZoomScrollStep(r, big, true, 500, 400);
        for (int32_t k = 0; k < 60; k += 7) {
            const V pixel{r.sourceLeft + k, big.height - 1 - r.sourceTop - k};
            const V point{r.originX + k, r.originY + k};
            if (zoom > 0) {
                EXPECT_EQ(toImage(big, toClient(big, pixel), false), pixel);
            } else {
                EXPECT_EQ(toClient(big, toImage(big, point, false)), point);
            }
        }
    }
}

TEST(Zoom, FittingAndPlacement)
{
    ZoomMetrics m = Metrics();
    const ZoomSubject s{kImageGray, 300, 200};
    EXPECT_EQ(ZoomToClient(s, 1, false, m), 3);
    EXPECT_EQ(ZoomToClient(s, -5, true, m), 1);
    EXPECT_EQ(ZoomShrinkToClient(s, 5, m), 3);
    EXPECT_EQ(ZoomShrinkToClient({kImageGray, 3000, 1000}, 1, m), -4);
    EXPECT_EQ(ZoomToClient({kImageEmpty, 0, 0}, 2, false, m), 2);
    EXPECT_EQ(ZoomGrowToWindow(s, 1, 700, 700), 2);
    EXPECT_EQ(ZoomGrowToWindow(s, 1, 250, 250), 1);
    EXPECT_EQ(V({ZoomForNewWindow(3000, 1000, m), ZoomForNewWindow(974, 754, m),
                 ZoomForNewWindow(975, 754, m), ZoomForNewWindow(0, 0, m)}),
              V({-4, 1, -2, 1}));

    // A third of the workspace is 333 across and 266 down.
    int32_t x, y;
    NextWindowPosition(true, 100, 100, m, x, y);
    EXPECT_EQ(V({x, y}), V({124, 130}));
    NextWindowPosition(true, 310, 240, m, x, y);
    EXPECT_EQ(V({x, y}), V({5, 5}));
    const auto cascade = CascadePositions(20, m);
    ASSERT_EQ(cascade.size(), 20u);
    EXPECT_EQ(cascade[8], std::make_pair(197, 245));
    EXPECT_EQ(cascade[9], std::make_pair(221, 5));  // y wrapped, x not yet at a third
    EXPECT_EQ(cascade[18], std::make_pair(5, 5));   // both wrapped

    m.workspaceWidth = m.workspaceHeight = 0;  // nothing fits: stops at one pixel
    EXPECT_EQ(ZoomForNewWindow(10, 10, m), -10);
}

}  // namespace
}  // namespace lv
