// The Amount control: a text line ("Amount: 75%"), a slider with one marker,
// or two when a gray mask varies the strength, and a square swatch at the
// right that shows the strength as a gray (sunken) or the mask (raised). A
// left click on the swatch offers "No Mask" and the eligible masks in an
// image menu; a right click brings the mask's window forward. The panel
// hears 1026 when the block changed: at a slider's release, a new mask, or
// a change of the mask's pixels; during a drag only the text and the swatch
// follow.
//
// The workspace, where the masks are looked for, is the one given at
// creation; without one, the nearest workspace among the panel's ancestors,
// or the one that holds the source window.
#pragma once

#include <QImage>
#include <QPointer>
#include <QTimer>
#include <QWidget>
#include <cstdint>
#include <vector>

#include "image/window.h"
#include "transform/amount.h"
#include "transform/controls/ui/image_menu.h"
#include "shell/messages.h"

class QLabel;
class QMdiArea;

namespace lv {

class SliderControl;


class AmountControl : public QWidget {
public:
    // A control at (x, y) of the panel, `width` wide and a text line plus a
    // slider high. With a source window a mask must have its image's size;
    // with none any size is offered. Starts at 1024 with no mask.
    AmountControl(int32_t x, int32_t y, int32_t width, QWidget* panel, int32_t controlId,
                  WindowHandle sourceWindow, QMdiArea* workspace = nullptr);
    ~AmountControl() override;

    // Takes a module's block: label, scale, markers and mask.
    void SetAmount(const AmountBlock& block);
    const AmountBlock& GetAmount() const { return block_; }
    // Chooses a mask (fresh markers) or, with none, drops it (one marker at
    // 1024), without telling the panel.
    void SetAmountMask(WindowHandle window);
    // The size a mask must have; both -1 for any.
    void SetMaskSize(int32_t width, int32_t height);

    int32_t controlId() const { return controlId_; }
    int32_t maskIndex() const { return maskIndex_; }
    const std::vector<WindowHandle>& maskList() const { return maskList_; }
    const QString& maskName() const { return maskName_; }
    QString text() const;
    SliderControl* slider() const { return slider_; }
    ImageMenu* menu() const { return menu_; }
    bool hovering() const { return hovering_; }
    // The swatch's square in the control's coordinates.
    QRect SwatchRect() const;

    // Rebuilds the list of eligible masks and finds the current one in it.
    void RebuildMaskList();

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void leaveEvent(QEvent* event) override;

private:
    void Layout();
    void Refresh();  // slider, text, swatch picture
    void UpdateText();
    void UpdatePicture();
    int32_t FindMask(const QString& name) const;
    void Mark(WindowHandle window);
    void Unmark();
    void ChooseMask(int64_t index);
    void OpenMenu();
    void EndHover();
    void ShowHoverTip();

    AmountBlock block_;
    int32_t controlId_;
    int32_t maskIndex_ = 0;
    int32_t maskWidth_ = -1;
    int32_t maskHeight_ = -1;
    QString maskName_;
    std::vector<WindowHandle> maskList_;
    WindowHandle marked_ = nullptr;  // the window this control holds in use
    QWidget* panel_;
    QPointer<QMdiArea> workspace_;
    QLabel* text_;
    SliderControl* slider_;
    QPointer<ImageMenu> menu_;
    QImage picture_;  // the mask at swatch size
    QTimer hoverTimer_;
    bool hovering_ = false;
    bool tipShown_ = false;
};

}  // namespace lv
