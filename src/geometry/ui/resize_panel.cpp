// Resize's part of its panel: a table with the input's numbers (Current) and
// the result's (New), in the units chosen beside Width and Resolution, with
// File Size and Proportions following, then the Preserve list, then the
// generic Interpolation Method. Top to bottom: input picker, table,
// Preserve, Interpolation Method. The arithmetic is geometry/resize_panel.h;
// this only shows its texts and hands it what is typed.
#include <QApplication>
#include <QFontMetrics>
#include <QKeyEvent>
#include <QLabel>
#include <QPointer>
#include <QVBoxLayout>
#include <algorithm>
#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "geometry/resize_panel.h"
#include "image/image.h"
#include "image/ui/image_window.h"
#include "shell/errors.h"
#include "shell/messages.h"
#include "shell/preferences.h"
#include "shell/ui/events.h"
#include "shell/ui/metrics.h"
#include "transform/controls/slider_math.h"
#include "transform/controls/ui/control_event.h"
#include "transform/controls/ui/pedit.h"
#include "transform/controls/ui/popup_list.h"
#include "transform/ui/panel.h"

namespace lv {
namespace {

constexpr int32_t kWidthId = 100;
constexpr int32_t kHeightId = 101;
constexpr int32_t kResolutionId = 102;
// The input picker carries the same number, but its message is always 1041,
// never the 1025 of a list.
constexpr int32_t kPreserveId = 103;
constexpr int32_t kSizeUnitsId = 104;
constexpr int32_t kResolutionUnitsId = 105;

// Tab and Shift+Tab in the three boxes go round Width, Height, Resolution
// (passing over a disabled box), and the box that gets the focus has its
// text selected. The keys reach the boxes themselves, or, where the
// program's key filter turns them into 1059 and 1060 first, the panel.
class TabCycle : public QObject {
public:
    TabCycle(QObject* parent, const std::array<QLineEdit*, 3>& boxes) : QObject(parent)
    {
        for (size_t i = 0; i < boxes.size(); ++i) boxes_[i] = boxes[i];
    }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() == QEvent::KeyPress) {
            const int key = static_cast<QKeyEvent*>(event)->key();
            if (key == Qt::Key_Tab || key == Qt::Key_Backtab)
                return Step(watched, key == Qt::Key_Tab);
        } else if (event->type() == UserMessageEvent::EventType()) {
            auto* e = static_cast<UserMessageEvent*>(event);
            if (e->message == kMsgTab || e->message == kMsgBackTab)
                return Step(ObjectOf(e->about), e->message == kMsgTab);
        }
        return QObject::eventFilter(watched, event);
    }

private:
    // False when `from` is none of the boxes, so that the key goes on.
    bool Step(QObject* from, bool forward)
    {
        int32_t at = -1;
        for (size_t i = 0; i < boxes_.size(); ++i)
            if (boxes_[i] && boxes_[i] == from) at = static_cast<int32_t>(i);
        if (at < 0) return false;
        for (int32_t n = 1; n <= 3; ++n) {
            const int32_t next = ((at + (forward ? n : -n)) % 3 + 3) % 3;
            QLineEdit* box = boxes_[static_cast<size_t>(next)];
            if (!box || !box->isEnabled()) continue;
            box->setFocus(forward ? Qt::TabFocusReason : Qt::BacktabFocusReason);
            box->selectAll();
            break;
        }
        return true;
    }

    std::array<QPointer<QLineEdit>, 3> boxes_;
};

class ResizePart : public PanelPart {
public:
    void Build(TransformPanel& panel, QVBoxLayout& layout) override
    {
        const TransformModule& module = panel.module();
        if (const ParamDecl* method = FindParam(module, "method")) {
            methodIndex_ = static_cast<size_t>(method - module.params.data());
            state_.method = ParamInt(*method, *panel.state().params);
        }
        Load(panel);

        QWidget* table = BuildTable(panel);
        auto* preserveRow = new ControlRow(&panel);
        preserve_ = new PopupListControl(
            0, 0, preserveRow, state_.preserve,
            PackPopupText("Preserve:", {"Proportions", "File Size and Proportions",
                                        "Image Size and Proportions", "None"}),
            kPreserveId);
        preserveRow->setMinimumSize(preserve_->size());

        // The method's generic row goes after Preserve.
        QWidget* method = panel.paramControl(methodIndex_);
        QWidget* methodRow = method ? method->parentWidget() : nullptr;
        if (methodRow) layout.removeWidget(methodRow);
        layout.addWidget(table);
        layout.addWidget(preserveRow);
        if (methodRow) layout.addWidget(methodRow);

        Show(kResizeShowAll);
        EnableBoxes();
        Store(panel, false);
    }

    bool Message(TransformPanel& panel, int32_t message, int32_t controlId, int64_t value) override
    {
        if (message == kMsgText &&
            (controlId == kWidthId || controlId == kHeightId || controlId == kResolutionId)) {
            if (programmatic_) return true;
            ResizeEntry entry;
            if (controlId == kWidthId)
                entry = ResizeWidthEntry(state_, width_->text().toStdString());
            else if (controlId == kHeightId)
                entry = ResizeHeightEntry(state_, height_->text().toStdString());
            else
                entry = ResizeResolutionEntry(state_, resolution_->text().toStdString());
            if (entry.beep) QApplication::beep();
            Show(entry.show);
            Store(panel, true);
            return true;
        }
        if (message != kMsgValueChanged) return false;
        const auto index = static_cast<int32_t>(value);
        switch (controlId) {
        case kSizeUnitsId: Show(ResizeSizeUnitsChosen(state_, index).show); return true;
        case kResolutionUnitsId: Show(ResizeResolutionUnitsChosen(state_, index).show); return true;
        case kPreserveId:
            Show(ResizePreserveChosen(state_, index).show);
            EnableBoxes();
            Store(panel, true);
            return true;
        default:
            // The generic row stores the method in the record.
            if (methodIndex_ != SIZE_MAX &&
                controlId == TransformPanel::ParamControlId(methodIndex_))
                state_.method = index;
            return false;
        }
    }

    void InputChanged(TransformPanel& panel) override
    {
        Load(panel);
        Show(kResizeShowAll);
        Store(panel, false);
    }

private:
    void Load(TransformPanel& panel)
    {
        const Image* input = panel.input();
        if (input)
            ResizePanelLoad(state_, input->kind, input->width, input->height, input->resolution,
                            CurrentPreferences().defaultResolution);
        else
            ResizePanelLoad(state_, kImageEmpty, 0, 0, 0.0, CurrentPreferences().defaultResolution);
    }

    // The table: a column of row names, the Current column of texts, the
    // New column of boxes and texts, and the units lists beside Width and
    // Resolution.
    QWidget* BuildTable(TransformPanel& panel)
    {
        const UiMetrics& m = Metrics();
        const QFontMetrics font(m.fontSystem);
        const char* const names[] = {"Width", "Height", "Resolution", "File Size", "Proportions"};
        int32_t nameWidth = 0;
        for (const char* name : names)
            nameWidth = std::max(nameWidth, font.horizontalAdvance(QString::fromLatin1(name)));
        nameWidth += m.margin;
        const int32_t boxWidth =
            font.horizontalAdvance(QStringLiteral("99999999999")) + 2 * m.margin;
        const int32_t currentX = nameWidth, newX = currentX + boxWidth + m.margin;
        const int32_t unitsX = newX + boxWidth + m.margin;
        const int32_t step = m.controlHeight + m.margin / 2;

        auto* table = new ControlRow(&panel);
        ApplyPanelStyle(table);
        auto text = [&](const QString& shown, int32_t x, int32_t y, int32_t width) {
            auto* label = new QLabel(shown, table);
            label->setGeometry(x, y, width, m.controlHeight);
            return label;
        };
        text(QStringLiteral("Current"), currentX, 0, boxWidth);
        text(QStringLiteral("New"), newX, 0, boxWidth);
        QLabel* current[5] = {};
        for (int32_t row = 0; row < 5; ++row) {
            const int32_t y = m.controlHeight + row * step;
            text(QString::fromLatin1(names[row]), 0, y, nameWidth);
            current[row] = text(QString(), currentX, y, boxWidth);
        }
        currentWidth_ = current[0];
        currentHeight_ = current[1];
        currentResolution_ = current[2];
        currentFileSize_ = current[3];
        currentProportions_ = current[4];
        auto box = [&](int32_t row, int32_t id) {
            return new PEditControl(newX, m.controlHeight + row * step, boxWidth, table, QString(),
                                    QString(), id);
        };
        width_ = box(0, kWidthId);
        height_ = box(1, kHeightId);
        resolution_ = box(2, kResolutionId);
        newFileSize_ = text(QString(), newX, m.controlHeight + 3 * step, boxWidth);
        newProportions_ = text(QString(), newX, m.controlHeight + 4 * step, boxWidth);
        sizeUnits_ =
            new PopupListControl(unitsX, m.controlHeight, table, state_.sizeUnits,
                                 PackPopupText("", {"pixels", "in", "mm", "cm"}), kSizeUnitsId);
        resolutionUnits_ =
            new PopupListControl(unitsX, m.controlHeight + 2 * step, table, state_.resolutionUnits,
                                 PackPopupText("", {"dpi", "dpmm", "dpcm"}), kResolutionUnitsId);
        table->setMinimumSize(unitsX + std::max(sizeUnits_->width(), resolutionUnits_->width()),
                              m.controlHeight + 5 * step);

        // A box that takes no entries shows its text in gray.
        for (PEditControl* edit : {width_, height_}) {
            QPalette palette = edit->edit()->palette();
            palette.setColor(QPalette::Disabled, QPalette::Text, QColor(0x80, 0x80, 0x80));
            edit->edit()->setPalette(palette);
        }
        auto* cycle = new TabCycle(table, {width_->edit(), height_->edit(), resolution_->edit()});
        for (PEditControl* edit : {width_, height_, resolution_})
            edit->edit()->installEventFilter(cycle);
        panel.installEventFilter(cycle);
        return table;
    }

    // Shows again what `show` names (ResizeShow bits).
    void Show(uint32_t show)
    {
        const ResizePanel& s = state_;
        auto qs = [](const std::string& text) { return QString::fromStdString(text); };
        if (show & kResizeShowCurrent) {
            currentWidth_->setText(
                qs(ResizeSizeText(s.currentWidth, s.sizeUnits, s.currentResolution)));
            currentHeight_->setText(
                qs(ResizeSizeText(s.currentHeight, s.sizeUnits, s.currentResolution)));
            currentResolution_->setText(
                qs(ResizeResolutionText(s.currentResolution, s.resolutionUnits)));
            currentFileSize_->setText(
                qs(ResizeFileSizeText(s.kind, s.currentWidth, s.currentHeight)));
            currentProportions_->setText(
                qs(ResizeProportionsText(s.currentWidth, s.currentHeight)));
        }
        // The panel's own writing is no entry.
        programmatic_ = true;
        if (show & kResizeShowWidth)
            width_->SetText(qs(ResizeSizeText(s.targetWidth, s.sizeUnits, s.targetResolution)));
        if (show & kResizeShowHeight)
            height_->SetText(qs(ResizeSizeText(s.targetHeight, s.sizeUnits, s.targetResolution)));
        if (show & kResizeShowResolution)
            resolution_->SetText(qs(ResizeResolutionText(s.targetResolution, s.resolutionUnits)));
        programmatic_ = false;
        if (show & kResizeShowFileSize)
            newFileSize_->setText(qs(ResizeFileSizeText(s.kind, s.targetWidth, s.targetHeight)));
        if (show & kResizeShowProportions)
            newProportions_->setText(qs(ResizeProportionsText(s.targetWidth, s.targetHeight)));
    }

    void EnableBoxes()
    {
        const bool enabled = ResizeSizeBoxesEnabled(state_.preserve);
        width_->setEnabled(enabled);
        height_->setEnabled(enabled);
    }

    // The New column into the record. After an entry (`changed`) the frame
    // hears of it; at opening and on a new input the output size is set
    // directly, since the frame remakes everything next.
    void Store(TransformPanel& panel, bool changed)
    {
        const TransformModule& module = panel.module();
        TransformParams& record = *panel.state().params;
        bool moved = false;
        if (const ParamDecl* width = FindParam(module, "width"))
            moved |= ParamSetInt(*width, record, state_.targetWidth);
        if (const ParamDecl* height = FindParam(module, "height"))
            moved |= ParamSetInt(*height, record, state_.targetHeight);
        if (const ParamDecl* resolution = FindParam(module, "resolution"))
            moved |= ParamSetReal(*resolution, record, state_.targetResolution);
        if (changed) {
            if (moved) panel.ParamsChanged();
            return;
        }
        TransformFrame& frame = panel.state();
        TransformOutputSize(module, panel.input(), record, frame.outputWidth, frame.outputHeight);
    }

    ResizePanel state_;
    // True while the panel writes its own boxes.
    bool programmatic_ = false;
    size_t methodIndex_ = SIZE_MAX;  // the generic row's parameter
    QLabel* currentWidth_ = nullptr;
    QLabel* currentHeight_ = nullptr;
    QLabel* currentResolution_ = nullptr;
    QLabel* currentFileSize_ = nullptr;
    QLabel* currentProportions_ = nullptr;
    PEditControl* width_ = nullptr;
    PEditControl* height_ = nullptr;
    PEditControl* resolution_ = nullptr;
    QLabel* newFileSize_ = nullptr;
    QLabel* newProportions_ = nullptr;
    PopupListControl* sizeUnits_ = nullptr;
    PopupListControl* resolutionUnits_ = nullptr;
    PopupListControl* preserve_ = nullptr;
};

const PanelPartRegistration kPart({
    .commandId = 4003,
    .check = CheckPictureKind,
    .make = NewPanelPart<ResizePart>,
    .shortBar = true,
});

}  // namespace
}  // namespace lv
