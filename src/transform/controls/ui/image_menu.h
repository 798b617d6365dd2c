// The image menu: a frameless pop-up that offers images, one row of 33
// pixels each, with a 32 by 32 picture (a thumbnail of the window's image,
// or a solid colour for an item with no window) and the window's current
// title or the item's text. The row under the pointer stands on 0xC0C0C0,
// the others on 0x808080. A release inside sends 1076 with the item's index
// to the owner and closes the menu (once the pointer has pressed or moved in
// it, so that the release of the opening click never chooses); a press
// outside closes it without a choice; a release outside does nothing, so the
// menu stays open after a click on the control that opened it.
//
// Also here: what the controls that offer images share — pictures at swatch
// size, finding the workspace, naming and showing image windows.
#pragma once

#include <QColor>
#include <QImage>
#include <QPointer>
#include <QWidget>
#include <cstdint>
#include <vector>

#include "image/image.h"
#include "image/window.h"
#include "shell/messages.h"

class QMdiArea;

namespace lv {

class ImageSubWindow;

inline constexpr int32_t kImageMenuRow = 33;
inline constexpr int32_t kImageMenuPicture = 32;

struct ImageMenuItem {
    int32_t index = 0;
    WindowHandle window = nullptr;  // none: the item shows `color`
    QString text;                   // shown when there is no window
    QColor color;
    QImage picture;  // the window's thumbnail, made when the item is added
};

class ImageMenu : public QWidget {
public:
    // A closed menu that sends its choice to `owner`; `workspace` bounds where
    // it opens (may be null).
    ImageMenu(QWidget* owner, int32_t controlId, QMdiArea* workspace);

    void AddItem(int32_t index, WindowHandle window, const QString& text, QColor color);
    // Opens with its top left corner at `globalPosition` (raised when it
    // would cross the workspace's lower edge) and the item of index
    // `current` under the pointer's highlight.
    void Open(QPoint globalPosition, int32_t current);

    int32_t count() const { return static_cast<int32_t>(items_.size()); }
    const ImageMenuItem& item(int32_t row) const { return items_[static_cast<size_t>(row)]; }
    // The text an item shows: the window's current title, or its own text.
    QString ItemText(int32_t row) const;
    int32_t hot() const { return hot_; }
    int32_t initial() const { return initial_; }
    QRect RowRect(int32_t row) const;

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    int32_t RowAt(QPoint at) const;
    void Choose(int32_t row);

    QPointer<QWidget> owner_;
    int32_t controlId_;
    QPointer<QMdiArea> workspace_;
    std::vector<ImageMenuItem> items_;
    int32_t hot_ = -1;
    int32_t initial_ = -1;
    bool pressed_ = false;  // a press in the menu, or the pointer moved into it
};

// A picture of an image fitted in a square of `side` pixels with its
// proportions kept (made by make_thumbnail), through the display tables,
// top row first; a solid colour fills the square. Null when there is
// nothing to show.
QImage ThumbnailPicture(const Image& image, int32_t side);

// The workspace a control works in: `given` when there is one, else the
// nearest workspace among the control's ancestors, else the one that holds
// `window` (an image window). Null when none is found.
QMdiArea* FindWorkspace(QMdiArea* given, const QWidget* control, WindowHandle window);

// The image window of a handle, or null.
ImageSubWindow* ImageWindowOf(WindowHandle window);
// The name a control keeps a chosen window by: its file name, or "Untitled n"
// for a picture that has none. Unlike the title it doesn't change with the
// zoom, so the choice is found again after a zoom.
QString ImageWindowName(WindowHandle window);
// Makes an image window the active one and restores it from an icon.
void ActivateImageWindow(WindowHandle window);

}  // namespace lv
