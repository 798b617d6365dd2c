#include "image/window.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "image/pixel.h"
#include "shell/errors.h"
#include "shell/frontend.h"

namespace lv {
namespace {

using V = std::vector<int32_t>;

// Records messages and repaint requests; can act while a message is
// delivered.
struct RecordingFrontEnd : FrontEnd {
    std::vector<std::pair<WindowHandle, int32_t>> sent;
    std::vector<V> regions;
    std::function<void(WindowHandle)> onSend;

    void SendToWindow(WindowHandle to, int32_t message, WindowHandle) override
    {
        sent.emplace_back(to, message);
        if (onSend) onSend(to);
    }
    void ImageRegionChanged(ImageWindow&, int32_t x0, int32_t y0, int32_t x1, int32_t y1) override
    {
        regions.push_back({x0, y0, x1, y1});
    }
};

char handles[8];
WindowHandle H(int32_t i) { return &handles[i]; }

class WindowTest : public ::testing::Test {
protected:
    RecordingFrontEnd frontEnd;
    ScopedFrontEnd scoped{frontEnd};
    void SetUp() override { PoolInit(), UndoClear(); }
    void TearDown() override
    {
        UndoClear(), PoolFree();
        for (int32_t i = 0; i < 8; ++i) UserRemoveWindow(H(i));
    }
    // A gray 6 x 4 window whose pixel (x, y) is base + x + 10 y.
    ImageWindow* Gray(WindowHandle handle, int32_t base)
    {
        int32_t slot;
        ImageWindow* w;
        if (SlotAllocate(slot, w) || ImageAlloc(w->image, kImageGray, 6, 4, 300.0)) return nullptr;
        w->hWindow = handle;
        for (int32_t y = 0; y < 4; ++y)
            for (int32_t x = 0; x < 6; ++x) w->image.rows[y][x] = uint8_t(base + x + 10 * y);
        return w;
    }
    // One stroke: a marker, then a saved pixel painted with `value`.
    static void Stroke(ImageWindow* w, int32_t x, int32_t y, uint8_t value, int32_t levels)
    {
        ASSERT_EQ(UndoSave(nullptr, 0, 0, 0, 0, levels), kOk);
        ASSERT_EQ(UndoSave(w, x, y, x, y, levels), kOk);
        w->image.rows[y][x] = value;
    }
};

TEST_F(WindowTest, PoolFillsCyclesAndRefusesThe257th)
{
    int32_t slot = -1;
    ImageWindow* record = nullptr;
    for (int32_t i = 0; i < kPoolSize; ++i) ASSERT_EQ(SlotAllocate(slot, record), kOk);
    EXPECT_EQ(slot, kPoolSize - 1);
    ImageWindow* fifth = SlotRecord(5);
    fifth->fileName = "five.tif";
    fifth->hWindow = H(1);
    EXPECT_EQ(SlotAllocate(slot, record), kErrTooManyImages);
    EXPECT_EQ(slot, -1);
    EXPECT_EQ(fifth->fileName, "five.tif");
    EXPECT_EQ(WindowRecord(H(1)), fifth);

    // The cursor has wrapped: the first free slot from 0, then onward from
    // there, so slot 2 freed behind it waits its turn.
    SlotRelease(7), SlotRelease(3);
    ASSERT_EQ(SlotAllocate(slot, record), kOk);
    EXPECT_EQ(slot, 3);
    SlotRelease(2);
    ASSERT_EQ(SlotAllocate(slot, record), kOk);
    EXPECT_EQ(slot, 7);

    SlotRelease(5);
    EXPECT_TRUE(fifth->free && fifth->fileName.empty());
    EXPECT_EQ(WindowRecord(H(1)), nullptr);
    EXPECT_EQ(SlotRecord(kPoolSize), nullptr);
}

TEST_F(WindowTest, UsersLockOldestFirstAndAreEachTold)
{
    ASSERT_EQ(UserAdd(H(1), H(0), "Readout", false), kOk);
    ASSERT_EQ(UserAdd(H(2), H(0), "Blur", true), kOk);
    ASSERT_EQ(UserAdd(H(3), H(0), std::string(100, 'x'), true), kOk);
    ASSERT_EQ(UserAdd(H(5), H(0), "Paint", false), kOk);
    EXPECT_STREQ(UserFindLock(H(0)), "Blur");
    UserRemove(H(2), H(0));
    EXPECT_EQ(std::string(UserFindLock(H(0))), std::string(80, 'x'));
    EXPECT_EQ(UserFindLock(H(4)), nullptr);

    // The first user removes itself and the last while it is told: the walk
    // goes on, and the removed one is not told.
    frontEnd.onSend = [](WindowHandle to) {
        if (to == H(1)) UserRemoveWindow(H(1)), UserRemove(H(5), H(0));
    };
    UsersNotifyChanged(H(0));
    UsersNotifyView(H(0));
    using Sent = std::vector<std::pair<WindowHandle, int32_t>>;
    EXPECT_EQ(frontEnd.sent,
              (Sent{{H(1), kMsgImageChanged}, {H(3), kMsgImageChanged}, {H(3), kMsgViewChanged}}));
    EXPECT_EQ(UserCount(), 1);
}

TEST_F(WindowTest, UndoLevelsGroupsAndPurge)
{
    ImageWindow* a = Gray(H(0), 0);
    ImageWindow* b = Gray(H(1), 100);
    ASSERT_TRUE(a && b);
    ASSERT_EQ(UserAdd(H(7), H(0), "Paint", false), kOk);

    Stroke(a, 0, 0, 200, 0);
    EXPECT_FALSE(UndoAvailable());
    a->image.rows[0][0] = 0;

    // Multilevel: each Undo takes back one stroke, newest first; a
    // rectangle reaching outside is clipped, and the first marker, on an
    // empty list, is not kept.
    ASSERT_EQ(UndoSave(nullptr, 0, 0, 0, 0, 2), kOk);
    ASSERT_EQ(UndoSave(a, 4, 2, 9, 9, 2), kOk);
    a->image.rows[3][5] = 200;
    Stroke(a, 1, 0, 201, 2);
    Stroke(b, 2, 2, 202, 2);
    EXPECT_EQ(UndoNodeCount(), 5);
    UndoGroup();
    EXPECT_EQ(b->image.rows[2][2], 122);
    EXPECT_TRUE(frontEnd.sent.empty());  // b has no users
    UndoGroup();
    EXPECT_EQ(a->image.rows[0][1], 1);
    EXPECT_EQ(a->image.rows[3][5], 200);
    EXPECT_EQ(frontEnd.sent.size(), 1u);
    UndoGroup();
    EXPECT_EQ(a->image.rows[3][5], 35);
    EXPECT_EQ(frontEnd.regions, (std::vector<V>{{2, 2, 2, 2}, {1, 0, 1, 0}, {4, 2, 5, 3}}));
    EXPECT_FALSE(UndoAvailable());

    // One level: only the last stroke, and a second Undo has nothing to do.
    Stroke(a, 0, 0, 50, 1);
    Stroke(a, 1, 0, 51, 1);
    UndoGroup();
    EXPECT_EQ(V({a->image.rows[0][0], a->image.rows[0][1]}), V({50, 1}));
    EXPECT_FALSE(UndoAvailable());

    // Purge removes one window's nodes anywhere; Undo goes on in the other.
    Stroke(b, 0, 0, 60, 2);
    Stroke(a, 0, 1, 61, 2);
    Stroke(b, 1, 1, 62, 2);
    UndoPurge(a);
    EXPECT_EQ(UndoNodeCount(), 4);
    UndoAll();
    EXPECT_EQ(V({b->image.rows[0][0], b->image.rows[1][1], a->image.rows[1][0]}),
              V({100, 111, 61}));
    EXPECT_EQ(UndoSave(a, 7, 0, 9, 3, 2), kOk);  // wholly outside: nothing kept
    EXPECT_FALSE(UndoAvailable());
}

TEST_F(WindowTest, UndoBinaryPatchAtOddBitOffsets)
{
    int32_t slot;
    ImageWindow* w;
    ASSERT_EQ(SlotAllocate(slot, w), kOk);
    ASSERT_EQ(ImageAlloc(w->image, kImageBinary, 21, 3, 72.0), kOk);
    auto bits = [&] {
        V all;
        for (int32_t y = 0; y < 3; ++y)
            for (int32_t x = 0; x < 21; ++x) all.push_back(GetBit(w->image.rows[y], x));
        return all;
    };
    for (int32_t y = 0; y < 3; ++y)
        for (int32_t x = 0; x < 21; ++x) PutBit(w->image.rows[y], x, (x * 7 + y * 3) % 5 < 2);
    const V before = bits();
    ASSERT_EQ(UndoSave(w, 3, 1, 13, 2, 2), kOk);
    for (int32_t y = 1; y <= 2; ++y)
        for (int32_t x = 3; x <= 13; ++x) FlipBit(w->image.rows[y], x);
    UndoStep();
    EXPECT_EQ(bits(), before);
}

}  // namespace
}  // namespace lv
