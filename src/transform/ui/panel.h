// A transformation's panel: the window every module's controls sit in, with
// the button bar (Auto, Preview, Apply, OK, Cancel), the preview window and
// the result windows. The state machine is the engine's (transform/frame.h);
// this is its host among the windows of the workspace.
#pragma once

#include <QMdiSubWindow>
#include <functional>
#include <memory>
#include <new>
#include <vector>

#include "transform/frame.h"

class QCheckBox;
class QPushButton;
class QVBoxLayout;

namespace lv {

class ImageSubWindow;
class MainWindow;
class TransformPanel;

// A module's own part of its panel, for what a list of parameters cannot
// show (a curve to draw, say). One object is made for each open panel and
// holds that panel's state; it lives in the module's ui/ folder and its
// type registers itself by the module's command. The generic rows stay.
class PanelPart {
public:
    virtual ~PanelPart() = default;
    // Adds the module's controls once the generic rows are in `layout`.
    virtual void Build(TransformPanel& panel, QVBoxLayout& layout) = 0;
    // A control's message, before the generic handling; true when taken.
    virtual bool Message(TransformPanel& panel, int32_t message, int32_t controlId,
                         int64_t value) = 0;
    // The input picker chose another picture; the preview restarts after.
    virtual void InputChanged(TransformPanel& panel) = 0;
};

struct PanelPartType {
    int32_t commandId = 0;
    // Before anything is made: 0, or the code the command reports.
    int32_t (*check)(const Image* input) = nullptr;
    // A new part for a panel being opened; null when memory is short.
    std::unique_ptr<PanelPart> (*make)() = nullptr;
    // Apply, OK and Cancel only: the panel has no preview of its own.
    bool shortBar = false;
    // The panel's width in pixels; 0 for the usual one.
    int32_t width = 0;
};

// A part's `check` for modules that take binary, gray and colour pictures:
// 14 for any other kind.
int32_t CheckPictureKind(const Image* input);

void RegisterPanelPart(const PanelPartType& type);
struct PanelPartRegistration {
    explicit PanelPartRegistration(const PanelPartType& type) { RegisterPanelPart(type); }
};

// A part's `make`: `.make = NewPanelPart<CurvePart>`.
template <class Part>
std::unique_ptr<PanelPart> NewPanelPart()
{
    return std::unique_ptr<PanelPart>(new (std::nothrow) Part());
}

class TransformPanel : public QMdiSubWindow, public FrameHost {
public:
    // The open function of a module: makes the panel on `input` (or none),
    // with the full button bar or, for `shortBar`, Apply, OK and Cancel only.
    // Result 0 or an error code for the command to report.
    static int32_t Open(MainWindow* frame, const TransformModule& module, ImageSubWindow* input,
                        bool shortBar = false);
    // The open panel, or null: at most one transformation is open.
    static TransformPanel* Current();
    ~TransformPanel() override;

    TransformFrame& state() { return frame_; }
    const TransformModule& module() const { return *frame_.module; }
    ImageSubWindow* sourceWindow() const { return source_; }
    // The input's picture, or null.
    const Image* input() const;
    MainWindow* mainWindow() const { return main_; }
    QPushButton* button(int32_t id) const;
    // The control of the module's parameter `index` (null when it has none
    // in the panel), and the identifier its messages carry. Integer fields,
    // popup lists, edit boxes and check boxes, by the parameter's type.
    QWidget* paramControl(size_t index) const;
    // Shows the row of the parameter named `name` only while the input is a
    // colour picture: a colour space means nothing to a gray one.
    void ShowRowForColour(const char* name);
    static int32_t ParamControlId(size_t index);
    QCheckBox* autoBox() const { return auto_; }
    // A parameter changed: the preview follows (or goes stale). When the
    // output's size or resolution moves with it (Resize, Crop, Add Border,
    // Mirror/Rotate), the preview is remade at the new size.
    void ParamsChanged();
    // The input picker chose another window: the panel reads it from now on,
    // drops an Amount mask of the old size, and remakes the preview.
    void ChangeInput(ImageSubWindow* input);

    // FrameHost
    ImageWindow* CreatePreview(bool full) override;
    void DestroyPreview(ImageWindow* window) override;
    void PreviewShown(ImageWindow* window, bool whole) override;
    int32_t ResultShown(ImageWindow* window, int32_t cascade) override;
    void ResultKept(ImageWindow* window) override;
    void SetAutoTicked(bool ticked) override;
    void EnablePreviewButton(bool enabled) override;
    void ActivatePanel() override;
    void ActivateSource() override;
    void DestroyPanel() override;

protected:
    bool event(QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    TransformPanel(MainWindow* frame, const TransformModule& module, ImageSubWindow* input,
                   bool shortBar);
    void Press(int32_t button);
    void BuildDefaultControls(QVBoxLayout& layout);
    void ControlMessage(int32_t message, int32_t controlId, int64_t value);
    ImageSubWindow* WindowOf(ImageWindow* record) const;

    MainWindow* main_;
    ImageSubWindow* source_;
    TransformFrame frame_;
    QCheckBox* auto_ = nullptr;
    QPushButton* preview_ = nullptr;
    QPushButton* apply_ = nullptr;
    QPushButton* ok_ = nullptr;
    QPushButton* cancel_ = nullptr;
    class AmountControl* amount_ = nullptr;
    class ColorImgControl* inputPicker_ = nullptr;
    std::vector<QWidget*> paramControls_;  // one a parameter, in order
    std::unique_ptr<PanelPart> part_;
    bool creating_ = false;  // a preview is being made: no display runs yet
    bool restoreMaximizing_ = false;  // the workspace maximises again once it closes
    bool closing_ = false;
};

}  // namespace lv
