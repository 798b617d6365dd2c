// The record behind every image window and preview, the pool that holds
// them, the list of windows that use another window, and the undo list of the
// hand tools.
//
// Front-end windows are named by opaque handles: the engine never looks
// inside one, it only compares them and hands them back to the front end.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "image/image.h"
#include "shell/messages.h"

namespace lv {

using WindowHandle = const void*;

struct PictureMetadata;  // files/metadata.h

// Window kinds of the children of the workspace that the engine deals with;
// panels have kinds 3 and above (see shell/commands.h for all of them).
enum WindowKindCode : int32_t { kWindowImage = 0, kWindowPreview = 1, kWindowProgress = 12 };

struct ImageWindow {
    Image image;    // the picture; owned by the slot
    Image display;  // the visible part at the current zoom, after the display tables
    int32_t gridDivisions = 1;
    int32_t zoom = 1;  // n >= 1: n screen pixels a pixel; -n: one screen pixel for n pixels
    // The visible rectangle in image pixels, y from the top of the picture.
    int32_t sourceLeft = 0, sourceTop = 0, sourceRight = 0, sourceBottom = 0;
    // The visible rectangle in zoomed pixels: the scroll positions and far edges.
    int32_t viewLeft = 0, viewTop = 0, viewRight = 0, viewBottom = 0;
    int32_t viewWidth = 0, viewHeight = 0;       // size of `display` in screen pixels
    int32_t scrollRangeX = 0, scrollRangeY = 0;  // 0 when no scroll bar is needed
    int32_t originX = 0, originY = 0;            // where `display` stands in the client area
    bool free = true;
    int32_t slot = 0;
    std::string fileName;  // full path; empty for an untitled image
    int32_t fileType = 0;
    // What the opened file said besides its pixels (camera, orientation,
    // profile), written again when the picture or a result of it is saved.
    std::shared_ptr<const PictureMetadata> metadata;
    WindowHandle hWindow = nullptr;
    WindowHandle maskWindow = nullptr;  // the mask shown over this window
    int32_t maskOpacity = 0;            // 0 none, -1 the mask alone, else 1..255
    int32_t overlayRed = 255, overlayGreen = 0, overlayBlue = 0;
    // Mirrors of the window's own words that engine rules read.
    int32_t windowKind = kWindowImage;
    bool modified = false;
};

// Puts a record back in its freshly reset state (both images freed), keeping
// `slot`.
void ImageWindowReset(ImageWindow& record);

// ---- Pool of 256 records ------------------------------------------------------

inline constexpr int32_t kPoolSize = 256;

void PoolInit();
void PoolFree();
// Takes the next free slot, cycling from the last one taken. 13 when all
// 256 are in use.
int32_t SlotAllocate(int32_t& slot, ImageWindow*& record);
// Frees both images, resets the record and marks the slot free; -1 is ignored.
void SlotRelease(int32_t slot);
// The record of a slot, or null outside 0..255.
ImageWindow* SlotRecord(int32_t slot);
// The record whose hWindow is `window`, or null.
ImageWindow* WindowRecord(WindowHandle window);

// ---- Users ----------------------------------------------------------------------

// Appends a record at the tail, so the oldest user stands at the head. 1
// when memory runs out.
int32_t UserAdd(WindowHandle user, WindowHandle imageWindow, const std::string& name, bool locks);
// Removes every record of that pair.
void UserRemove(WindowHandle user, WindowHandle imageWindow);
// Removes every record that names the window as user or as image window.
void UserRemoveWindow(WindowHandle window);
// The name of the first (oldest) user that locks the window, or null.
const char* UserFindLock(WindowHandle imageWindow);
// Sends the message, through the front end, to each user of the window.
void UsersNotifyChanged(WindowHandle imageWindow);
void UsersNotifyRenamed(WindowHandle imageWindow);
void UsersNotifyView(WindowHandle imageWindow);
int32_t UserCount();

// ---- Undo -----------------------------------------------------------------------

// undoLevels of the preferences: 0 none, 1 single, 2 multilevel.
void UndoReset();
void UndoClear();
bool UndoAvailable();
// With a record: saves the inclusive rectangle (image coordinates, bottom-up)
// of its image before a change. With null: a group marker, which starts a
// stroke (and with one level empties the list first). Result 0, or 1 when
// memory runs out.
int32_t UndoSave(ImageWindow* record, int32_t x0, int32_t y0, int32_t x1, int32_t y1,
                 int32_t undoLevels);
// Undoes the newest node: writes its patch back, tells the users, and asks
// the front end to show the changed rectangle.
void UndoStep();
// The Undo command: steps until a group marker has been undone or the list
// is empty.
void UndoGroup();
// The Undo All command.
void UndoAll();
// Removes every node of a record; markers stay.
void UndoPurge(const ImageWindow* record);
int32_t UndoNodeCount();

}  // namespace lv
