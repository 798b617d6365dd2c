// The ColorImg control: a label and a square of 33 pixels that holds either
// a solid colour or an image chosen among the open ones. A left press
// offers the eligible images in an image menu, led by "Select Solid Color"
// when the colour picker is allowed (with no eligible image the picker opens
// at once); a right press brings the chosen image's window forward. The
// parent hears 1041: with 0 when an image was chosen or its pixels changed,
// with the colour (0xRRGGBB) when the picker changed it and no image is
// chosen. A chosen image is held in use, locked, as "Color Image Control".
//
// The workspace is the one given at creation, or else the nearest among the
// parent's ancestors.
#pragma once

#include <QColor>
#include <QImage>
#include <QPointer>
#include <QWidget>
#include <cstdint>
#include <functional>
#include <vector>

#include "image/window.h"
#include "transform/controls/ui/image_menu.h"
#include "shell/messages.h"

class QMdiArea;

namespace lv {

inline constexpr int32_t kColorImgSquare = 33;

class ColorImgControl : public QWidget {
public:
    // `pickerAllowed` -1 means that the colour picker never opens; `kinds` has
    // bit k set when images of kind k may be chosen; both limits -1 mean any
    // size; `excluded` is never offered.
    ColorImgControl(int32_t x, int32_t y, QWidget* parent, const QString& label,
                    const QString& pickerTitle, QColor color, int32_t controlId,
                    int32_t pickerAllowed, int32_t kinds, int32_t maskWidth, int32_t maskHeight,
                    WindowHandle excluded, int32_t pickerMode, QMdiArea* workspace = nullptr);
    ~ColorImgControl() override;

    // What opens the colour picker for a control at a colour (or brings the
    // open one forward). The picker reports changes through
    // PickerColorChanged, or by sending 1029 with 0xRRGGBB to the control,
    // and 1030 when it closes; it may register itself with SetPicker.
    static std::function<void(ColorImgControl*, QColor)> openPickerFunction;

    QColor color() const { return color_; }
    // The chosen image's window, or none for the solid colour.
    WindowHandle imageWindow() const { return imageWindow_; }
    void GetColorImg(int32_t& red, int32_t& green, int32_t& blue, WindowHandle& window) const;
    // Sets the colour and the chosen image (none: the colour), without
    // telling the parent.
    void SetColorImg(QColor color, WindowHandle window);
    void SetLabels(const QString& label, const QString& pickerTitle);
    void SetLimits(int32_t pickerAllowed, int32_t kinds, int32_t maskWidth, int32_t maskHeight,
                   WindowHandle excluded, int32_t pickerMode);
    // A colour from the picker: kept, and passed on as 1041 when no image is
    // chosen.
    void PickerColorChanged(QColor color);
    void SetPicker(QWidget* picker) { picker_ = picker; }
    QWidget* picker() const { return picker_; }

    const QString& pickerTitle() const { return pickerTitle_; }
    int32_t pickerMode() const { return pickerMode_; }
    int32_t controlId() const { return controlId_; }
    int32_t selected() const { return selected_; }
    const std::vector<WindowHandle>& imageList() const { return imageList_; }
    ImageMenu* menu() const { return menu_; }
    QRect SquareRect() const;

    // Rebuilds the list of eligible images and finds the chosen one in it.
    void RebuildImageList();

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;

private:
    void Layout();
    void OpenPicker();
    void Choose(int64_t index);
    void Select(WindowHandle window);
    void UpdatePicture();

    QString label_;
    QString pickerTitle_;
    QColor color_;
    int32_t controlId_;
    int32_t pickerAllowed_;
    int32_t kinds_;
    int32_t maskWidth_;
    int32_t maskHeight_;
    WindowHandle excluded_;
    int32_t pickerMode_;
    int32_t labelWidth_ = 0;
    int32_t selected_ = 0;
    std::vector<WindowHandle> imageList_;
    QString name_;
    WindowHandle imageWindow_ = nullptr;  // chosen and held in use
    QImage picture_;
    QPointer<QMdiArea> workspace_;
    QPointer<ImageMenu> menu_;
    QPointer<QWidget> picker_;
};

// The input picker of a panel: a ColorImg labelled "Input Image:" that never
// opens the colour picker, offering images of the given kinds, with the
// source window chosen.
ColorImgControl* CreateInputPicker(QWidget* parent, int32_t controlId, int32_t kinds,
                                   WindowHandle sourceWindow, int32_t x = 0, int32_t y = 0,
                                   QMdiArea* workspace = nullptr);

}  // namespace lv
