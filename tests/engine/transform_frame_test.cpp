#include "transform/frame.h"

#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "image/pixel.h"
#include "shell/errors.h"
#include "support/scripted_frontend.h"
#include "synthesis/test_card.h"
#include "tone/brightness_curve.h"
#include "transform/point_worker.h"
#include "transform/registry.h"

namespace lv {
namespace {

// A module whose worker counts its runs and can be made to fail.
int32_t gFailWith = 0;

void Invert(const uint8_t* in, uint8_t* out, int32_t pixels, int32_t channels,
            const TransformParams&)
{
    for (int32_t i = 0; i < pixels * channels; ++i) out[i] = static_cast<uint8_t>(255 - in[i]);
}

int32_t CountingWorker(const TransformArgs& args)
{
    if (gFailWith) return gFailWith;
    return RunPointWorker(args, "Test", Invert);
}

const TransformModule kModule{
    .name = "test", .title = "Test", .create = NewParams<TransformParams>, .worker = CountingWorker};

// Windows as records of the pool; what the frame asked for is written down.
struct FakeHost : FrameHost {
    TransformFrame* frame = nullptr;
    std::vector<ImageWindow*> previews, results;
    int32_t destroyed = 0, panelActivations = 0, sourceActivations = 0;
    bool autoTicked = false, previewEnabled = true, panelGone = false;
    std::vector<int32_t> cascades;

    ImageWindow* CreatePreview(bool) override
    {
        int32_t slot = 0;
        ImageWindow* record = nullptr;
        if (SlotAllocate(slot, record)) return nullptr;
        PreparePreviewRecord(*frame, *record, 400, 300, 10, 30);
        previews.push_back(record);
        return record;
    }
    void DestroyPreview(ImageWindow* window) override
    {
        ++destroyed;
        SlotRelease(window->slot);
    }
    void PreviewShown(ImageWindow*, bool) override {}
    int32_t ResultShown(ImageWindow* window, int32_t cascade) override
    {
        window->windowKind = kWindowImage;
        cascades.push_back(cascade);
        return 0;
    }
    void ResultKept(ImageWindow* window) override { results.push_back(window); }
    void SetAutoTicked(bool ticked) override { autoTicked = ticked; }
    void EnablePreviewButton(bool enabled) override { previewEnabled = enabled; }
    void ActivatePanel() override { ++panelActivations; }
    void ActivateSource() override { ++sourceActivations; }
    void DestroyPanel() override { panelGone = true; }
};

class FrameTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        PoolInit();
        gFailWith = 0;
        int32_t slot = 0;
        ASSERT_EQ(SlotAllocate(slot, input_), 0);
        ASSERT_EQ(MakeTestCard(input_->image, kImageGray, 300, 200), 0);
        frame_.module = &kModule;
        frame_.params = CreateParams(kModule);
        frame_.host = &host_;
        frame_.source = input_;
        host_.frame = &frame_;
        FrameStart(frame_);
    }
    void TearDown() override { PoolFree(); }

    bool Press(int32_t button)
    {
        bool closed = false;
        panel_command(frame_, button, closed);
        return closed;
    }

    // Starts the frame again on `module` with a fresh test card of `kind`.
    void UseModule(const TransformModule& module, int32_t kind)
    {
        ImageFree(input_->image);
        ASSERT_EQ(MakeTestCard(input_->image, kind, 300, 200), 0);
        frame_.module = &module;
        frame_.params = CreateParams(module);
        FrameStart(frame_);
        AmountClearMask(frame_.params->amount);
    }

    // Applies, then previews at 1:1 and 1:3 and compares sampled pixels, and
    // a strip scrolled into view, with the result.
    void ExpectPreviewMatchesResult(int32_t channels)
    {
        Press(kButtonApply);
        ASSERT_EQ(host_.results.size(), 1u);
        const Image& full = host_.results[0]->image;
        for (int32_t zoom : {1, -3}) {
            Press(kButtonPreview);
            ImageWindow& p = *frame_.preview;
            p.zoom = zoom;
            const int32_t m = zoom < 0 ? -zoom : 1;
            p.viewWidth = (300 + m - 1) / m;
            p.viewHeight = (200 + m - 1) / m;
            frame_.previewStale = true;
            ImageFree(p.display);
            Press(kButtonPreview);
            for (int32_t r = 0; r < p.viewHeight; r += 7)
                for (int32_t c = 0; c < p.viewWidth; c += 5)
                    for (int32_t k = 0; k < channels; ++k) {
                        // Display row r shows image row r * m from the bottom.
                        ASSERT_EQ(p.display.rows[r][c * channels + k],
                                  full.rows[r * m][c * m * channels + k])
                            << "zoom " << zoom << " at " << c << "," << r;
                    }
        }
        // A strip scrolled into view computes only its rectangle.
        ImageWindow& p = *frame_.preview;
        std::memset(p.display.rows[5], 0, static_cast<size_t>(p.display.stride));
        frame_.previewStale = true;
        const FrameRect strip{0, 5, p.viewWidth - 1, 5};
        run_transform(frame_, false, &strip);
        for (int32_t k = 0; k < channels; ++k)
            EXPECT_EQ(p.display.rows[5][4 * channels + k], full.rows[15][12 * channels + k]);
    }

    ImageWindow* input_ = nullptr;
    FakeHost host_;
    TransformFrame frame_;
};

TEST_F(FrameTest, AutoRecomputesOnEveryChangeAndKeepsPreviewGrey)
{
    EXPECT_FALSE(Press(kButtonAuto));
    EXPECT_EQ(frame_.runs, 1);
    EXPECT_TRUE(host_.autoTicked);
    EXPECT_FALSE(host_.previewEnabled);
    params_changed(frame_);
    params_changed(frame_);
    EXPECT_EQ(frame_.runs, 3);
    EXPECT_FALSE(host_.previewEnabled);

    // Auto off: no run, the button stays grey until the next change.
    Press(kButtonAuto);
    EXPECT_EQ(frame_.runs, 3);
    EXPECT_FALSE(host_.previewEnabled);
    params_changed(frame_);
    EXPECT_TRUE(host_.previewEnabled);
    EXPECT_EQ(frame_.runs, 3);
    Press(kButtonPreview);
    EXPECT_EQ(frame_.runs, 4);
    Press(kButtonPreview);  // current: nothing to do
    EXPECT_EQ(frame_.runs, 4);
}

TEST_F(FrameTest, ApplyTwiceMakesTwoCascadedResultsAndOkThenComputesNothing)
{
    Press(kButtonPreview);
    Press(kButtonApply);
    Press(kButtonApply);
    EXPECT_EQ(frame_.runs, 3);
    ASSERT_EQ(host_.results.size(), 2u);
    EXPECT_NE(host_.results[0], host_.results[1]);
    EXPECT_EQ(host_.cascades, (std::vector<int32_t>{1, 2}));
    EXPECT_EQ(host_.results[1]->image.rows[7][9],
              static_cast<uint8_t>(255 - input_->image.rows[7][9]));

    EXPECT_TRUE(Press(kButtonOk));
    EXPECT_EQ(frame_.runs, 3);
    EXPECT_TRUE(host_.panelGone);
    EXPECT_EQ(host_.sourceActivations, 1);
}

TEST_F(FrameTest, OkWithAPendingChangeRunsOnceAndStaysOpenOnFailure)
{
    gFailWith = kErrImageType;
    test::ScriptedFrontEnd fe;
    ScopedFrontEnd installed(fe);
    EXPECT_FALSE(Press(kButtonOk));
    EXPECT_EQ(frame_.runs, 1);
    EXPECT_FALSE(host_.panelGone);
    EXPECT_EQ(fe.boxes.back(), "Error|Illegal input image type");

    gFailWith = 0;
    EXPECT_TRUE(Press(kButtonOk));
    EXPECT_EQ(frame_.runs, 2);
    EXPECT_EQ(host_.results.size(), 1u);
    EXPECT_EQ(host_.sourceActivations, 0);  // the result stays active
}

TEST_F(FrameTest, AbortAndClosingThePreviewByHandClearAuto)
{
    test::ScriptedFrontEnd fe;
    fe.abortAtStep = 2;
    ScopedFrontEnd installed(fe);
    // A preview large enough for a box: 300x200 at 1:2 is 150x100.
    Press(kButtonAuto);
    EXPECT_EQ(fe.boxes.back(), "Attention|Operation Aborted");
    EXPECT_FALSE(host_.autoTicked);
    EXPECT_EQ(frame_.preview, nullptr);
    EXPECT_FALSE(host_.panelGone);

    fe.abortAtStep = -1;
    Press(kButtonAuto);
    ASSERT_NE(frame_.preview, nullptr);
    PreviewClosedByHand(frame_);
    EXPECT_FALSE(host_.autoTicked);
    EXPECT_TRUE(host_.previewEnabled);
    EXPECT_TRUE(frame_.previewStale);
}

TEST_F(FrameTest, PreviewAgreesWithTheResultAtEachZoom)
{
    AmountClearMask(frame_.params->amount);
    frame_.params->amount.amount = 512;
    ExpectPreviewMatchesResult(1);
}

// The tone modules on a colour picture, through the same frame.
TEST_F(FrameTest, BrightnessCurvePreviewAgreesWithItsResult)
{
    const TransformModule* module = FindTransform("brightness-curve");
    ASSERT_NE(module, nullptr);
    UseModule(*module, kImageColor);
    auto& params = static_cast<BrightnessCurveParams&>(*frame_.params);
    for (int32_t i = 0; i < 256; ++i)  // a steep contrast curve
        params.table[i] = static_cast<uint8_t>(Clamp8(2 * i - 128));
    params.amount.amount = 800;
    ExpectPreviewMatchesResult(3);
}

TEST_F(FrameTest, EqualizePreviewAgreesWithItsResult)
{
    const TransformModule* module = FindTransform("equalize");
    ASSERT_NE(module, nullptr);
    UseModule(*module, kImageColor);
    ExpectPreviewMatchesResult(3);
}

TEST_F(FrameTest, TheInputChangingRemakesThePreviewForTheNewSize)
{
    Press(kButtonAuto);
    ImageWindow* old = frame_.preview;
    ASSERT_EQ(MakeTestCard(input_->image, kImageColor, 120, 90), 0);
    FrameStart(frame_);
    frame_.autoPreview = true;  // FrameStart resets the bar; the panel keeps Auto on
    restart_preview(frame_);
    ASSERT_NE(frame_.preview, nullptr);
    EXPECT_EQ(frame_.preview->image.width, 120);
    EXPECT_EQ(frame_.preview->display.kind, kImageColor);
    EXPECT_GE(host_.destroyed, 1);
    (void)old;
    EXPECT_TRUE(host_.autoTicked);
}

}  // namespace
}  // namespace lv
