// The pool of image-window records, the list of windows that use another
// window, and the undo list of the hand tools.
#include "image/window.h"

#include <array>
#include <cstddef>
#include <list>
#include <new>
#include <vector>

#include "image/pixel.h"
#include "shell/errors.h"
#include "shell/frontend.h"

namespace lv {
namespace {

// ---- Pool -----------------------------------------------------------------------

// The 256 records live in one static block for the whole run, so a record's
// address never changes; the undo list relies on that.
struct Pool {
    std::array<ImageWindow, kPoolSize> records;
    int32_t nextSlot = 0;  // where the search for a free slot starts

    Pool()
    {
        for (int32_t i = 0; i < kPoolSize; ++i) records[static_cast<size_t>(i)].slot = i;
    }
};

Pool& ThePool()
{
    static Pool pool;
    return pool;
}

bool ValidSlot(int32_t slot) { return slot >= 0 && slot < kPoolSize; }

// ---- Users ----------------------------------------------------------------------

inline constexpr size_t kUserNameLength = 80;

struct UserRecord {
    uint64_t id = 0;  // tells records apart while the list changes under a walk
    WindowHandle user = nullptr;
    WindowHandle imageWindow = nullptr;
    bool locks = false;
    std::string name;
};

struct Users {
    std::list<UserRecord> records;  // oldest at the head
    uint64_t nextId = 1;
};

Users& TheUsers()
{
    static Users users;
    return users;
}

// Sends `message` to every user of the window. The users are taken from a
// snapshot, and each is looked up again before it is told, because a user
// may remove itself or others while it handles the message.
void NotifyUsers(WindowHandle imageWindow, int32_t message)
{
    if (!imageWindow) return;
    Users& users = TheUsers();
    std::vector<uint64_t> ids;
    try {
        for (const UserRecord& record : users.records)
            if (record.imageWindow == imageWindow) ids.push_back(record.id);
    } catch (const std::bad_alloc&) {
        return;
    }
    for (uint64_t id : ids) {
        WindowHandle to = nullptr;
        bool found = false;
        for (const UserRecord& record : users.records) {
            if (record.id == id) {
                to = record.user;
                found = true;
                break;
            }
        }
        if (found) CurrentFrontEnd().SendToWindow(to, message, imageWindow);
    }
}

// ---- Undo -----------------------------------------------------------------------

struct UndoNode {
    ImageWindow* window = nullptr;           // whose pixels were saved; null for a group marker
    int32_t x0 = 0, y0 = 0, x1 = 0, y1 = 0;  // inclusive, image coordinates
    Image patch;
};

// Newest at the front. std::list keeps nodes in place while others come
// and go.
std::list<UndoNode>& UndoList()
{
    static std::list<UndoNode> list;
    return list;
}

bool IsPictureKind(int32_t kind) { return kind >= kImageBinary && kind <= kImageColor; }

int32_t BytesPerPixel(int32_t kind) { return kind == kImageColor ? 3 : 1; }

// Writes a node's patch back into its window's image. A patch that no longer
// matches the image (the slot was refilled without a purge) is dropped.
bool WritePatchBack(const UndoNode& node)
{
    Image& image = node.window->image;
    const Image& patch = node.patch;
    if (image.kind != patch.kind || !IsPictureKind(image.kind) || !image.rows || !patch.rows)
        return false;
    if (node.x0 < 0 || node.y0 < 0 || node.x1 >= image.width || node.y1 >= image.height)
        return false;
    const int32_t width = node.x1 - node.x0 + 1;
    if (patch.width != width || patch.height != node.y1 - node.y0 + 1) return false;
    for (int32_t y = node.y0; y <= node.y1; ++y) {
        const uint8_t* in = patch.rows[y - node.y0];
        uint8_t* out = image.rows[y];
        if (image.kind == kImageBinary) {
            for (int32_t x = 0; x < width; ++x) PutBit(out, node.x0 + x, GetBit(in, x));
        } else {
            const size_t bpp = static_cast<size_t>(BytesPerPixel(image.kind));
            CopyBytes(in, out + static_cast<size_t>(node.x0) * bpp,
                      static_cast<size_t>(width) * bpp);
        }
    }
    return true;
}

}  // namespace

void ImageWindowReset(ImageWindow& record)
{
    const int32_t slot = record.slot;
    const bool isFree = record.free;
    ImageFree(record.image);
    ImageFree(record.display);
    record = ImageWindow{};
    record.slot = slot;
    record.free = isFree;
}

// ---- Pool -----------------------------------------------------------------------

void PoolInit()
{
    Pool& pool = ThePool();
    for (ImageWindow& record : pool.records) {
        ImageWindowReset(record);
        record.free = true;
    }
    pool.nextSlot = 0;
}

void PoolFree()
{
    for (ImageWindow& record : ThePool().records) {
        ImageWindowReset(record);
        record.free = true;
    }
}

int32_t SlotAllocate(int32_t& slot, ImageWindow*& record)
{
    Pool& pool = ThePool();
    for (int32_t i = 0; i < kPoolSize; ++i) {
        const int32_t candidate = (pool.nextSlot + i) % kPoolSize;
        ImageWindow& found = pool.records[static_cast<size_t>(candidate)];
        if (!found.free) continue;
        ImageWindowReset(found);
        found.free = false;
        pool.nextSlot = (candidate + 1) % kPoolSize;
        slot = candidate;
        record = &found;
        return kOk;
    }
    slot = -1;
    record = nullptr;
    return kErrTooManyImages;
}

void SlotRelease(int32_t slot)
{
    if (!ValidSlot(slot)) return;
    ImageWindow& record = ThePool().records[static_cast<size_t>(slot)];
    ImageWindowReset(record);
    record.free = true;
}

ImageWindow* SlotRecord(int32_t slot)
{
    if (!ValidSlot(slot)) return nullptr;
    return &ThePool().records[static_cast<size_t>(slot)];
}

ImageWindow* WindowRecord(WindowHandle window)
{
    if (!window) return nullptr;
    for (ImageWindow& record : ThePool().records)
        if (!record.free && record.hWindow == window) return &record;
    return nullptr;
}

// ---- Users ----------------------------------------------------------------------

int32_t UserAdd(WindowHandle user, WindowHandle imageWindow, const std::string& name, bool locks)
{
    Users& users = TheUsers();
    try {
        UserRecord record;
        record.id = users.nextId++;
        record.user = user;
        record.imageWindow = imageWindow;
        record.locks = locks;
        record.name = name.substr(0, kUserNameLength);
        users.records.push_back(std::move(record));
    } catch (const std::bad_alloc&) {
        return kErrOutOfMemory;
    }
    return kOk;
}

void UserRemove(WindowHandle user, WindowHandle imageWindow)
{
    TheUsers().records.remove_if([&](const UserRecord& record) {
        return record.user == user && record.imageWindow == imageWindow;
    });
}

void UserRemoveWindow(WindowHandle window)
{
    TheUsers().records.remove_if([&](const UserRecord& record) {
        return record.user == window || record.imageWindow == window;
    });
}

const char* UserFindLock(WindowHandle imageWindow)
{
    for (const UserRecord& record : TheUsers().records)
        if (record.imageWindow == imageWindow && record.locks) return record.name.c_str();
    return nullptr;
}

void UsersNotifyChanged(WindowHandle imageWindow) { NotifyUsers(imageWindow, kMsgImageChanged); }
void UsersNotifyRenamed(WindowHandle imageWindow) { NotifyUsers(imageWindow, kMsgImageRenamed); }
void UsersNotifyView(WindowHandle imageWindow) { NotifyUsers(imageWindow, kMsgViewChanged); }

int32_t UserCount() { return static_cast<int32_t>(TheUsers().records.size()); }

// ---- Undo -----------------------------------------------------------------------

void UndoReset() { UndoList().clear(); }

void UndoClear() { UndoList().clear(); }

bool UndoAvailable() { return !UndoList().empty(); }

int32_t UndoSave(ImageWindow* record, int32_t x0, int32_t y0, int32_t x1, int32_t y1,
                 int32_t undoLevels)
{
    if (undoLevels <= 0) return kOk;
    std::list<UndoNode>& list = UndoList();

    if (!record) {
        // A group marker starts a stroke. With one level only the stroke
        // that starts here can be undone, so everything older goes, and a
        // marker alone on an empty list would undo nothing.
        if (undoLevels == 1) list.clear();
        if (list.empty()) return kOk;
        try {
            list.emplace_front();
        } catch (const std::bad_alloc&) {
            return kErrOutOfMemory;
        }
        return kOk;
    }

    const Image& image = record->image;
    if (!IsPictureKind(image.kind) || !image.rows) return kOk;
    // Only the part inside the picture can change, so only that is kept.
    if (x0 < 0) x0 = 0;
    if (y0 < 0) y0 = 0;
    if (x1 > image.width - 1) x1 = image.width - 1;
    if (y1 > image.height - 1) y1 = image.height - 1;
    if (x1 < x0 || y1 < y0) return kOk;

    std::list<UndoNode> node;
    try {
        node.emplace_front();
    } catch (const std::bad_alloc&) {
        return kErrOutOfMemory;
    }
    UndoNode& saved = node.front();
    saved.window = record;
    saved.x0 = x0;
    saved.y0 = y0;
    saved.x1 = x1;
    saved.y1 = y1;
    const int32_t result = ImageCopyRect(image, x0, y0, x1, y1, saved.patch);
    if (result) return result;
    saved.patch.resolution = 100.0;
    list.splice(list.begin(), node);
    return kOk;
}

void UndoStep()
{
    std::list<UndoNode>& list = UndoList();
    if (list.empty()) return;
    // The node leaves the list before anyone is told, so a front end that
    // purges or saves while it repaints cannot disturb this step.
    std::list<UndoNode> taken;
    taken.splice(taken.begin(), list, list.begin());
    UndoNode& node = taken.front();
    if (node.window && WritePatchBack(node)) {
        UsersNotifyChanged(node.window->hWindow);
        CurrentFrontEnd().ImageRegionChanged(*node.window, node.x0, node.y0, node.x1, node.y1);
    }
}

void UndoGroup()
{
    std::list<UndoNode>& list = UndoList();
    while (!list.empty()) {
        const bool marker = list.front().window == nullptr;
        UndoStep();
        if (marker) break;
    }
}

void UndoAll()
{
    while (!UndoList().empty()) UndoStep();
}

void UndoPurge(const ImageWindow* record)
{
    if (!record) return;
    UndoList().remove_if([&](const UndoNode& node) { return node.window == record; });
}

int32_t UndoNodeCount() { return static_cast<int32_t>(UndoList().size()); }

}  // namespace lv
