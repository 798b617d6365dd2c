// The colour picker: a modeless window of the workspace in which a colour is
// chosen by hue and saturation on a field (hue across, saturation up), by
// value on a bar beside it, or typed as red, green and blue (0..255) or hue
// (0..359 degrees), saturation and value (0..100 percent). The colour it was
// opened with and the new one are shown side by side. Every change, dragging
// included, sends 1029 with the colour as 0xRRGGBB to its owner; OK keeps
// the colour, Cancel puts the old one back, and closing sends 1030.
#pragma once

#include <QColor>
#include <QMdiSubWindow>
#include <QPointer>
#include <QString>
#include <cstdint>

#include "transform/controls/compass_math.h"
#include "shell/messages.h"

class QMdiArea;
class QPushButton;
class QSpinBox;

namespace lv {

constexpr int32_t kColorPickerKind = 9;  // the window kind in "lvWindowKind"

// The colour as the value of a colour message, and back.
int64_t ColorValue(QColor color);
QColor ColorFromValue(int64_t value);

class ColorPicker : public QMdiSubWindow {
public:
    // Use OpenColorPicker.
    ColorPicker(int32_t fieldWidth, int32_t fieldHeight, const QString& title, QWidget* owner,
                int32_t controlId, QColor color, int32_t mode, int32_t flags);
    ~ColorPicker() override;

    QColor color() const { return QColor(rgb_.red, rgb_.green, rgb_.blue); }
    QColor oldColor() const { return old_; }
    const HsvColor& hsv() const { return hsv_; }
    QWidget* owner() const { return owner_; }
    int32_t controlId() const { return controlId_; }
    int32_t mode() const { return mode_; }
    int32_t flags() const { return flags_; }

    // Moves the picker to a colour without telling the owner.
    void SetColor(QColor color);
    // OK: closes with the colour as it is.
    void Accept();
    // Cancel: puts the old colour back (1029 when it differs) and closes.
    void Cancel();

protected:
    void closeEvent(QCloseEvent* event) override;
    bool event(QEvent* event) override;

private:
    void BoxChanged(QSpinBox* box);
    // Takes a new colour from bytes or from hue, saturation and value,
    // updates every part but `source` (the box being typed in), and sends
    // 1029 when `notify` and the bytes changed.
    void ApplyRgb(const RgbColor& rgb, QSpinBox* source, bool notify);
    void ApplyHsv(const HsvColor& hsv, QSpinBox* source, bool notify);
    void Refresh(QSpinBox* source, uint32_t before, bool notify);
    void StepFocus(bool forward);
    void NotifyClosed();

    QPointer<QWidget> owner_;
    int32_t controlId_;
    int32_t mode_;
    int32_t flags_;
    QColor old_;
    RgbColor rgb_;
    HsvColor hsv_;
    bool updating_ = false;
    bool closedSent_ = false;

    QWidget* field_ = nullptr;
    QWidget* valueBar_ = nullptr;
    QWidget* newSwatch_ = nullptr;
    QSpinBox* boxes_[6] = {};  // red, green, blue, hue, saturation, value
    QPushButton* ok_ = nullptr;
    QPushButton* cancel_ = nullptr;
};

// Opens a picker in the workspace beside the owner's panel, titled `title`,
// at `color`, and makes it the active window. `width` and `height` are the
// size of the hue and saturation field, 256 by 192 when 0 or less, at least
// 64. `mode` and `flags` are kept for the owner; mode 0 is the only one.
// Returns the picker, or none without a workspace.
ColorPicker* OpenColorPicker(QMdiArea* workspace, int width, int height, const QString& title,
                             QWidget* owner, int32_t controlId, QColor color, int32_t mode,
                             int32_t flags);

// Moves an open picker to a colour without sending 1029.
void SetColorPicker(ColorPicker* picker, QColor color);

}  // namespace lv
