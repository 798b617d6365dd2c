#include "transform/amount.h"

#include <gtest/gtest.h>

#include <cstring>

#include "image/pixel.h"
#include "image/thumbnail.h"
#include "synthesis/test_card.h"
#include "transform/registry.h"

namespace lv {
namespace {

TEST(Amount, LevelsTextAndMarkers)
{
    EXPECT_EQ(amount_level(1024), 255);
    EXPECT_EQ(amount_level(0), 0);
    EXPECT_EQ(amount_level(512), 128);  // the blend's mapping rounds; 127 is Brightness's own

    AmountBlock block;
    EXPECT_EQ(AmountText(block), "Amount: 100%");
    block.amount = 256;
    EXPECT_EQ(AmountText(block), "Amount: 25%");
    block.bipolar = 1;
    block.amount = 513;
    EXPECT_EQ(AmountText(block), "Amount: 0%");  // no rounding term on this scale
    block.amount = 0;
    EXPECT_EQ(AmountText(block), "Amount: -100%");

    Image mask;
    AmountSetMask(block, &mask, nullptr);
    EXPECT_EQ(block.amount, 512);  // bipolar: both markers neutral
    EXPECT_EQ(block.amount2, 512);
    block.bipolar = 0;
    AmountSetMask(block, &mask, nullptr);
    EXPECT_EQ(AmountText(block), "Amount: 0% .. 100%");
    AmountClearMask(block);
    EXPECT_EQ(block.amount, 1024);
    EXPECT_EQ(block.amount2, -1);
    EXPECT_EQ(block.mask, nullptr);
}

TEST(Amount, BlendFollowsLevelsAndMask)
{
    const uint8_t input[4] = {10, 10, 10, 10};
    const uint8_t result[4] = {250, 250, 250, 250};
    uint8_t out[4];
    AmountBlock block;
    Image mask;

    // Full strength, no mask: the result as computed.
    std::memcpy(out, result, 4);
    AmountBlendRow(AmountPassFor(block), input, out, nullptr, 4, 1);
    EXPECT_EQ(out[0], 250);
    // Strength 0: the input exactly.
    block.amount = 0;
    std::memcpy(out, result, 4);
    AmountBlendRow(AmountPassFor(block), input, out, nullptr, 4, 1);
    EXPECT_EQ(out[3], 10);

    // A mask from 0 to 1024: black keeps the input, white takes the result.
    AmountSetMask(block, &mask, nullptr);
    const uint8_t maskRow[4] = {0, 255, 128, 64};
    std::memcpy(out, result, 4);
    const AmountPass pass = AmountPassFor(block);
    EXPECT_TRUE(pass.UsesMask());
    AmountBlendRow(pass, input, out, maskRow, 4, 1);
    EXPECT_EQ(out[0], 10);
    EXPECT_EQ(out[1], 250);
    EXPECT_EQ(out[2], Lerp8(10, 250, 128));
    // Inverted sense.
    block.amount = 1024;
    block.amount2 = 0;
    std::memcpy(out, result, 4);
    AmountBlendRow(AmountPassFor(block), input, out, maskRow, 4, 1);
    EXPECT_EQ(out[0], 250);
    EXPECT_EQ(out[1], 10);
    // Both markers at full strength: the mask is not even looked at.
    block.amount2 = 1024;
    EXPECT_FALSE(AmountPassFor(block).Blends());
}

TEST(Thumbnail, FillsTheBoxWithProportionsKept)
{
    Image card, small;
    ASSERT_EQ(MakeTestCard(card, kImageColor, 300, 100), 0);
    ASSERT_EQ(make_thumbnail(card, small, 32, 32, false, false), 0);
    EXPECT_EQ(small.width, 32);
    EXPECT_EQ(small.height, 10);
    EXPECT_EQ(small.resolution, 0.0);
    // Corners sample the corners.
    EXPECT_EQ(0, std::memcmp(small.rows[9] + 31 * 3, card.rows[99] + 299 * 3, 3));
    ASSERT_EQ(make_thumbnail(card, small, 32, 32, true, false), 0);
    EXPECT_EQ(small.width, 10);
    EXPECT_EQ(small.height, 32);
    // Enlarging as readily as reducing; never below 2 pixels.
    Image tiny;
    ASSERT_EQ(MakeTestCard(tiny, kImageGray, 10, 1), 0);
    ASSERT_EQ(make_thumbnail(tiny, small, 190, 190, false, false), 0);
    EXPECT_EQ(small.width, 190);
    EXPECT_EQ(small.height, 19);
    ASSERT_EQ(MakeTestCard(tiny, kImageGray, 400, 1), 0);
    ASSERT_EQ(make_thumbnail(tiny, small, 32, 32, false, false), 0);
    EXPECT_EQ(small.height, 2);
}

TEST(Registry, BuiltInModulesRunFromTheDescription)
{
    const TransformModule* negative = FindTransform("negative");
    ASSERT_NE(negative, nullptr);
    EXPECT_STREQ(negative->title, "Negative");
    EXPECT_EQ(FindTransform("no-such"), nullptr);
    Image card, result;
    ASSERT_EQ(MakeTestCard(card, kImageBinary, 40, 30), 0);
    auto params = CreateParams(*negative);
    ASSERT_EQ(RunTransformToImage(*negative, *params, &card, result), 0);
    EXPECT_EQ(result.kind, kImageGray);  // binary input gives gray output
    EXPECT_EQ(result.rows[3][5], GetBit(card.rows[3], 5) ? 0 : 255);
}

}  // namespace
}  // namespace lv
