// Rows split across threads: the same bytes as one thread, the progress
// box stepped on the calling thread with counts that only rise, and Cancel
// stopping every band at a row boundary.
#include "image/threads.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

#include "image/image.h"
#include "image/progress.h"
#include "shell/errors.h"
#include "support/scripted_frontend.h"
#include "synthesis/test_card.h"
#include "transform/registry.h"

namespace lv {
namespace {

struct ThreadCountScope {
    explicit ThreadCountScope(int32_t count) { SetThreadCount(count); }
    ~ThreadCountScope() { SetThreadCount(0); }
};

Image Apply(const char* name, const Image& input, const char* option, const char* value,
          const Image* mask, int32_t threads)
{
    ThreadCountScope scope(threads);
    const TransformModule* module = FindTransform(name);
    EXPECT_NE(module, nullptr);
    auto params = CreateParams(*module);
    std::string problem;
    if (option) {
        EXPECT_EQ(ParamSetText(*FindParam(*module, option), *params, value, problem), 0);
    }
    if (mask) {
        AmountSetMask(params->amount, mask, nullptr);
        params->amount.amount = 200;
        params->amount.amount2 = 900;
    }
    Image result;
    EXPECT_EQ(RunTransformToImage(*module, *params, &input, result), 0);
    return result;
}

TEST(Threads, TwoThreadsGiveTheBytesOfOne)
{
    Image colour, gray, mask;
    ASSERT_EQ(MakeTestCard(colour, kImageColor, 701, 523), 0);
    ASSERT_EQ(MakeTestCard(gray, kImageGray, 913, 401), 0);
    ASSERT_EQ(MakeTestCard(mask, kImageGray, 701, 523), 0);
    struct Case {
        const char* name;
        const Image& input;
        const char* option;
        const char* value;
        const Image* mask;
    } cases[] = {{"negative", colour, nullptr, nullptr, nullptr},
                 {"negative", gray, nullptr, nullptr, nullptr},
                 {"equalize", colour, "color-space", "hsl", &mask},
                 {"brightness-curve", colour, "color-space", "hsv", &mask}};
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        const Image one = Apply(c.name, c.input, c.option, c.value, c.mask, 1);
        const Image two = Apply(c.name, c.input, c.option, c.value, c.mask, 2);
        const Image four = Apply(c.name, c.input, c.option, c.value, c.mask, 4);
        ASSERT_EQ(one.height, c.input.height);
        const size_t bytes = static_cast<size_t>(one.width) * (one.kind == kImageColor ? 3 : 1);
        for (int32_t y = 0; y < one.height; ++y) {
            ASSERT_EQ(std::memcmp(one.rows[y], two.rows[y], bytes), 0) << y;
            ASSERT_EQ(std::memcmp(one.rows[y], four.rows[y], bytes), 0) << y;
        }
    }
}

TEST(Threads, TheBoxIsSteppedOnTheCallingThreadAndCancelStopsAtARow)
{
    ThreadCountScope scope(2);
    const std::thread::id caller = std::this_thread::get_id();
    std::vector<int32_t> steps;
    std::atomic<int32_t> rows{0};
    std::vector<std::atomic<int32_t>> seen(1000);
    const int32_t result = ParallelRows(
        1000,
        [&](int32_t r) {
            seen[static_cast<size_t>(r)].fetch_add(1);
            rows.fetch_add(1);
        },
        [&](int32_t done) {
            EXPECT_EQ(std::this_thread::get_id(), caller);
            steps.push_back(done);
            return 0;
        });
    EXPECT_EQ(result, 0);
    EXPECT_EQ(rows.load(), 1000);
    for (const auto& count : seen) EXPECT_EQ(count.load(), 1);
    EXPECT_TRUE(std::is_sorted(steps.begin(), steps.end()));
    EXPECT_EQ(steps.back(), 999);

    // Cancel at the 100th step of the calling thread's band: every band
    // stops before its next row, and no row is half done.
    std::atomic<int32_t> started{0}, finished{0};
    int32_t calls = 0;
    const int32_t stopped = ParallelRows(
        100000,
        [&](int32_t) {
            started.fetch_add(1);
            std::this_thread::sleep_for(std::chrono::microseconds(20));
            finished.fetch_add(1);
        },
        [&](int32_t) { return ++calls == 100 ? kErrAborted : 0; });
    EXPECT_EQ(stopped, kErrAborted);
    EXPECT_EQ(started.load(), finished.load());
    EXPECT_LT(finished.load(), 100000);

    // Through a worker: Cancel once the count passes 50 (bands make it rise
    // by more than one at a time) is the user's abort, 11.
    struct CancelPast : test::ScriptedFrontEnd {
        bool ProgressPump(const ProgressBox& box) override
        {
            ScriptedFrontEnd::ProgressPump(box);
            return box.current >= 50;
        }
    } fe;
    ScopedFrontEnd installed(fe);
    Image card, result2;
    ASSERT_EQ(MakeTestCard(card, kImageColor, 800, 600), 0);
    const TransformModule* negative = FindTransform("negative");
    auto params = CreateParams(*negative);
    EXPECT_EQ(RunTransformToImage(*negative, *params, &card, result2), kErrAborted);
    EXPECT_EQ(fe.titles.at(0), "Negative");
    EXPECT_EQ(fe.closes, 1);
    EXPECT_TRUE(std::is_sorted(fe.steps.begin(), fe.steps.end()));
}

}  // namespace
}  // namespace lv
