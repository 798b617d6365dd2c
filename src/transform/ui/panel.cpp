#include "transform/ui/panel.h"

#include <QCheckBox>
#include <QCloseEvent>
#include <QHBoxLayout>
#include <QMdiArea>
#include <QPushButton>
#include <QVBoxLayout>

#include "image/ui/image_window.h"
#include "image/zoom.h"
#include "shell/commands.h"
#include "shell/errors.h"
#include "shell/preferences.h"
#include "shell/text.h"
#include "shell/ui/events.h"
#include "shell/ui/main_window.h"
#include "shell/ui/metrics.h"
#include "shell/ui/panel_keys.h"
#include "shell/ui/workspace.h"
#include "transform/controls/slider_math.h"
#include "transform/controls/ui/amount_control.h"
#include "transform/controls/ui/color_img.h"
#include "transform/controls/ui/control_event.h"
#include "transform/controls/ui/image_menu.h"
#include "transform/controls/ui/integer_field.h"
#include "transform/controls/ui/pedit.h"
#include "transform/controls/ui/popup_list.h"

namespace lv {

namespace {

TransformPanel* gCurrent = nullptr;

std::vector<PanelPartType>& PartTypes()
{
    static std::vector<PanelPartType> types;
    return types;
}

const PanelPartType* FindPanelPart(int32_t commandId)
{
    for (const PanelPartType& type : PartTypes())
        if (type.commandId == commandId) return &type;
    return nullptr;
}

constexpr int kPanelWidth = 420;

// The identifiers of the generic controls' messages.
constexpr int32_t kInputPickerId = 103;
constexpr int32_t kAmountId = 100;
constexpr int32_t kFirstParamId = 200;

}  // namespace

TransformPanel* TransformPanel::Current() { return gCurrent; }

void RegisterPanelPart(const PanelPartType& type) { PartTypes().push_back(type); }

int32_t CheckPictureKind(const Image* input)
{
    if (input && (input->kind < kImageBinary || input->kind > kImageColor)) return kErrImageType;
    return kOk;
}

void TransformPanel::ShowRowForColour(const char* name)
{
    const TransformModule& m = module();
    for (size_t i = 0; i < m.params.size(); ++i) {
        if (std::string(m.params[i].name) != name) continue;
        if (QWidget* control = paramControl(i)) {
            const Image* picture = input();
            control->parentWidget()->setVisible(picture && picture->kind == kImageColor);
        }
    }
}

const Image* TransformPanel::input() const { return source_ ? &source_->record().image : nullptr; }

int32_t TransformPanel::Open(MainWindow* frame, const TransformModule& module,
                             ImageSubWindow* input, bool shortBar)
{
    if (gCurrent) return kOk;  // the command is grey while one is open
    const PanelPartType* partType = FindPanelPart(module.commandId);
    if (partType && partType->check) {
        if (int32_t code = partType->check(input ? &input->record().image : nullptr)) return code;
    }
    std::unique_ptr<TransformParams> params = CreateParams(module);
    if (!params) return kErrOutOfMemory;
    std::unique_ptr<PanelPart> part;
    if (partType && partType->make && !(part = partType->make())) return kErrOutOfMemory;
    if (partType && partType->shortBar) shortBar = true;
    auto* panel = new TransformPanel(frame, module, input, shortBar);
    panel->part_ = std::move(part);
    panel->frame_.params = std::move(params);
    FrameStart(panel->frame_);

    auto* body = new QWidget;
    body->setFont(Metrics().fontSystem);
    body->setAutoFillBackground(true);
    QPalette gray = body->palette();
    gray.setColor(QPalette::Window, QColor(0x80, 0x80, 0x80));
    body->setPalette(gray);
    auto* layout = new QVBoxLayout(body);
    layout->setContentsMargins(Metrics().margin, Metrics().margin, Metrics().margin,
                               Metrics().margin);
    auto* bar = new QHBoxLayout;
    if (!shortBar) {
        panel->auto_ = new QCheckBox(QStringLiteral("Auto"));
        panel->preview_ = new QPushButton(QStringLiteral("Preview"));
        bar->addWidget(panel->auto_);
        bar->addWidget(panel->preview_);
        connect(panel->auto_, &QCheckBox::clicked, panel, [panel] { panel->Press(kButtonAuto); });
        connect(panel->preview_, &QPushButton::clicked, panel,
                [panel] { panel->Press(kButtonPreview); });
    }
    panel->apply_ = new QPushButton(QStringLiteral("Apply"));
    panel->ok_ = new QPushButton(QStringLiteral("OK"));
    panel->cancel_ = new QPushButton(QStringLiteral("Cancel"));
    for (QPushButton* b : {panel->apply_, panel->ok_, panel->cancel_}) bar->addWidget(b);
    bar->addStretch();
    connect(panel->apply_, &QPushButton::clicked, panel, [panel] { panel->Press(kButtonApply); });
    connect(panel->ok_, &QPushButton::clicked, panel, [panel] { panel->Press(kButtonOk); });
    connect(panel->cancel_, &QPushButton::clicked, panel, [panel] { panel->Press(kButtonCancel); });
    layout->addLayout(bar);
    // The panel's own lock comes first, so that a refused close names the
    // panel rather than one of its controls.
    if (input) UserAdd(panel->frame_.panel, input->handle(), module.title, true);
    panel->BuildDefaultControls(*layout);
    if (panel->part_) panel->part_->Build(*panel, *layout);
    layout->addStretch();
    panel->setWidget(body);

    QMdiArea* workspace = frame->workspace();
    // Beside a maximised picture the panel and its preview keep their own
    // sizes: while the panel is open, a window made active is not
    // maximised in turn.
    if (!workspace->testOption(QMdiArea::DontMaximizeSubWindowOnActivation)) {
        workspace->setOption(QMdiArea::DontMaximizeSubWindowOnActivation, true);
        panel->restoreMaximizing_ = true;
    }
    workspace->addSubWindow(panel);
    panel->setWindowTitle(QString::fromLatin1(module.title));
    const int32_t width = partType && partType->width > 0 ? partType->width : kPanelWidth;
    const QSize size(width, body->sizeHint().height() + Metrics().cyChildBorder);
    const QSize area = workspace->viewport()->size();
    // Centred across the workspace, resting a margin above its bottom edge.
    panel->setGeometry((area.width() - size.width()) / 2,
                       std::max(0, area.height() - size.height() - Metrics().margin), size.width(),
                       size.height());
    panel->show();
    workspace->setActiveSubWindow(panel);
    return kOk;
}

TransformPanel::TransformPanel(MainWindow* frame, const TransformModule& module,
                               ImageSubWindow* input, bool shortBar)
    : main_(frame), source_(input)
{
    setAttribute(Qt::WA_DeleteOnClose);
    ClearSystemMenuKeys(this);
    setProperty("lvWindowKind", PanelKindOf(module.commandId));
    frame_.module = &module;
    frame_.host = this;
    frame_.panel = HandleOf(this);
    frame_.source = input ? &input->record() : nullptr;
    frame_.hasPreviewButton = !shortBar;
    gCurrent = this;
}

TransformPanel::~TransformPanel()
{
    if (gCurrent == this) gCurrent = nullptr;
    UserRemoveWindow(HandleOf(this));
}

QWidget* TransformPanel::paramControl(size_t index) const
{
    return index < paramControls_.size() ? paramControls_[index] : nullptr;
}

int32_t TransformPanel::ParamControlId(size_t index)
{
    return kFirstParamId + static_cast<int32_t>(index);
}

QPushButton* TransformPanel::button(int32_t id) const
{
    switch (id) {
    case kButtonPreview: return preview_;
    case kButtonApply: return apply_;
    case kButtonOk: return ok_;
    case kButtonCancel: return cancel_;
    default: return nullptr;
    }
}

void TransformPanel::Press(int32_t button)
{
    bool closed = false;
    panel_command(frame_, button, closed);
}

ImageSubWindow* TransformPanel::WindowOf(ImageWindow* record) const
{
    return record ? dynamic_cast<ImageSubWindow*>(ObjectOf(record->hWindow)) : nullptr;
}

// ---- The frame's windows ----------------------------------------------------------------

ImageWindow* TransformPanel::CreatePreview(bool full)
{
    QMdiArea* workspace = main_->workspace();
    ImageSubWindow* window = nullptr;
    creating_ = true;
    if (ImageSubWindow::Create(workspace, nullptr, 1, 1, &window)) {
        creating_ = false;
        return nullptr;
    }
    ImageWindow& record = window->record();
    const ZoomMetrics m = window->Metrics();
    const int32_t frameWidth = m.cxChildBorder + 2 * m.borderWidth;
    const int32_t frameHeight = m.cyChildBorder + 2 * m.borderWidth;
    PreparePreviewRecord(frame_, record, m.workspaceWidth, m.workspaceHeight, frameWidth,
                         frameHeight);
    if (!full) {
        // The preview computes its display copy with the module's worker;
        // scrolled strips only.
        window->displayFunction = [this, window](bool whole, int32_t x0, int32_t y0, int32_t x1,
                                                 int32_t y1) {
            if (creating_ || frame_.preview != &window->record()) return int32_t{kOk};
            const int32_t h = window->record().viewHeight;
            const FrameRect strip{x0, h - 1 - y1, x1, h - 1 - y0};
            frame_.previewStale = true;
            run_transform(frame_, false, whole ? nullptr : &strip);
            return int32_t{kOk};
        };
        window->closedFunction = [this, window] {
            if (frame_.preview == &window->record()) PreviewClosedByHand(frame_);
        };
    }
    // At the top right corner of the workspace.
    const int32_t width = record.viewWidth + frameWidth, height = record.viewHeight + frameHeight;
    window->setGeometry(std::max(0, m.workspaceWidth - width), 0, width, height);
    window->UpdateTitle();
    creating_ = false;
    return &record;
}

void TransformPanel::DestroyPreview(ImageWindow* record)
{
    if (ImageSubWindow* window = WindowOf(record)) {
        window->closedFunction = nullptr;
        delete window;
    }
}

void TransformPanel::PreviewShown(ImageWindow* record, bool whole)
{
    ImageSubWindow* window = WindowOf(record);
    if (!window) return;
    window->UpdateTitle();
    window->Recenter();
    if (whole) window->view()->viewport()->update();
    main_->workspace()->setActiveSubWindow(window);
}

int32_t TransformPanel::ResultShown(ImageWindow* record, int32_t cascade)
{
    ImageSubWindow* window = WindowOf(record);
    if (!window) return kOk;
    // A result is the same photograph: its camera's metadata goes with it.
    if (frame_.source) record->metadata = frame_.source->metadata;
    window->displayFunction = nullptr;
    window->closedFunction = nullptr;
    record->windowKind = kWindowImage;
    if (source_) {
        record->zoom = source_->record().zoom;
        // Each result steps one margin across and one caption down.
        window->move(source_->pos() +
                     QPoint(cascade * Metrics().margin, cascade * Metrics().captionHeight));
    }
    const int32_t code = window->Rebuild(true);
    window->UpdateTitle();
    window->show();
    return code;
}

void TransformPanel::ResultKept(ImageWindow* record)
{
    ImageSubWindow* window = WindowOf(record);
    if (!window) return;
    main_->workspace()->setActiveSubWindow(window);
    record->modified = true;
    record->windowKind = kWindowImage;
    // A result of another size than its input (Resize, Crop, Add Border, a
    // quarter turn) starts from the least reduction at which it fits, as a
    // newly opened picture does; the input's zoom says nothing of it. Then
    // the zoom fits the workspace.
    const Image* input = frame_.source ? &frame_.source->image : nullptr;
    if (input && (record->image.width != input->width || record->image.height != input->height)) {
        const int32_t zoom =
            ZoomForNewWindow(record->image.width, record->image.height, window->Metrics());
        if (zoom != record->zoom) window->ZoomSet(zoom, true);
    }
    window->Fit();
    window->UpdateTitle();
}

void TransformPanel::SetAutoTicked(bool ticked)
{
    if (auto_) auto_->setChecked(ticked);
}

void TransformPanel::EnablePreviewButton(bool enabled)
{
    if (preview_) preview_->setEnabled(enabled);
}

void TransformPanel::ActivatePanel() { main_->workspace()->setActiveSubWindow(this); }

void TransformPanel::ActivateSource()
{
    if (source_) main_->workspace()->setActiveSubWindow(source_);
}

void TransformPanel::DestroyPanel()
{
    closing_ = true;
    if (gCurrent == this) gCurrent = nullptr;
    if (restoreMaximizing_)
        main_->workspace()->setOption(QMdiArea::DontMaximizeSubWindowOnActivation, false);
    deleteLater();
}

// ---- Controls ---------------------------------------------------------------------------

namespace {

// A control placed at (0, 0) in a row of the panel's layout.
template <class Control>
QWidget* Row(QVBoxLayout& layout, QObject* panel, Control*& control,
             std::function<Control*(QWidget*)> make)
{
    auto* row = new ControlRow(panel);
    control = make(row);
    row->setMinimumHeight(control->height());
    row->setMinimumWidth(control->width());
    layout.addWidget(row);
    return row;
}

}  // namespace

void TransformPanel::BuildDefaultControls(QVBoxLayout& layout)
{
    const int32_t width = kPanelWidth - 2 * Metrics().margin - Metrics().cxChildBorder;
    if (source_) {
        // Pictures of kinds 1 to 3.
        Row<ColorImgControl>(layout, this, inputPicker_, [this](QWidget* row) {
            return CreateInputPicker(row, kInputPickerId, 0b1110, source_->handle(), 0, 0,
                                     main_->workspace());
        });
    }
    const TransformModule& m = *frame_.module;
    for (size_t i = 0; i < m.params.size(); ++i) {
        const ParamDecl& p = m.params[i];
        if (!p.inPanel) {
            paramControls_.push_back(nullptr);
            continue;
        }
        const int32_t id = kFirstParamId + static_cast<int32_t>(i);
        const QString label =
            *p.label ? QString::fromLatin1(p.label) : QString::fromLatin1(p.name) + ":";
        const TransformParams& record = *frame_.params;
        QWidget* control = nullptr;
        switch (p.type) {
        case ParamType::Int: {
            IntegerControl* integer = nullptr;
            Row<IntegerControl>(layout, this, integer, [&](QWidget* row) {
                return new IntegerControl(0, 0, 80, row, label, ParamInt(p, record),
                                          static_cast<int32_t>(p.minimum),
                                          static_cast<int32_t>(p.maximum), id);
            });
            control = integer;
            break;
        }
        case ParamType::Choice: {
            PopupListControl* list = nullptr;
            Row<PopupListControl>(layout, this, list, [&](QWidget* row) {
                return new PopupListControl(
                    0, 0, row, ParamInt(p, record),
                    PackPopupText(label.toStdString(), ParamChoiceLabels(p)), id);
            });
            control = list;
            break;
        }
        case ParamType::Flag: {
            auto* row = new ControlRow(this);
            auto* box = new QCheckBox(QString::fromLatin1(*p.label ? p.label : p.name), row);
            box->setChecked(ParamInt(p, record) != 0);
            row->setMinimumHeight(box->sizeHint().height());
            connect(box, &QCheckBox::toggled, this,
                    [this, id](bool on) { ControlMessage(kMsgValueChanged, id, on ? 1 : 0); });
            layout.addWidget(row);
            control = box;
            break;
        }
        case ParamType::Real: {
            std::string text;
            RealToText(ParamReal(p, record), text, p.decimals, false, false);
            PEditControl* edit = nullptr;
            Row<PEditControl>(layout, this, edit, [&](QWidget* row) {
                return new PEditControl(0, 0, 200, row, label, QString::fromStdString(text), id);
            });
            control = edit;
            break;
        }
        case ParamType::File:   // never in the panel (CheckModule)
        case ParamType::Group:  // nor a group: its members are
            break;
        }
        paramControls_.push_back(control);
    }
    if (m.hasAmount) {
        Row<AmountControl>(layout, this, amount_, [&](QWidget* row) {
            return new AmountControl(0, 0, width, row, kAmountId,
                                     source_ ? source_->handle() : nullptr, main_->workspace());
        });
        amount_->SetAmount(frame_.params->amount);
    }
}

void TransformPanel::ControlMessage(int32_t message, int32_t controlId, int64_t value)
{
    if (part_ && part_->Message(*this, message, controlId, value)) return;
    const TransformModule& m = *frame_.module;
    if (controlId == kAmountId && message == kMsgAmountChanged && amount_) {
        frame_.params->amount = amount_->GetAmount();
        ParamsChanged();
        return;
    }
    if (controlId == kInputPickerId && message == kMsgImagePicker && inputPicker_) {
        int32_t r = 0, g = 0, b = 0;
        WindowHandle chosen = nullptr;
        inputPicker_->GetColorImg(r, g, b, chosen);
        if (ImageSubWindow* input = ImageWindowOf(chosen)) ChangeInput(input);
        return;
    }
    const size_t index = static_cast<size_t>(controlId - kFirstParamId);
    if (controlId < kFirstParamId || index >= m.params.size() || !paramControls_[index]) return;
    const ParamDecl& param = m.params[index];
    TransformParams& record = *frame_.params;
    bool changed = false;
    if (auto* integer = dynamic_cast<IntegerControl*>(paramControls_[index]))
        changed = ParamSetInt(param, record, integer->value());
    else if (message == kMsgValueChanged && param.type != ParamType::Real)
        changed = ParamSetInt(param, record, static_cast<int32_t>(value));
    else if (auto* edit = dynamic_cast<PEditControl*>(paramControls_[index])) {
        // A number outside the range, or half typed, waits for the next key.
        double number = 0;
        if (ParseReal(edit->text().toStdString(), number) == kOk)
            changed = ParamSetReal(param, record, number);
    }
    if (changed) ParamsChanged();
}

void TransformPanel::ParamsChanged()
{
    int32_t width = 0, height = 0;
    const Image* input = frame_.source ? &frame_.source->image : nullptr;
    TransformOutputSize(*frame_.module, input, *frame_.params, width, height);
    if (width == frame_.outputWidth && height == frame_.outputHeight) {
        params_changed(frame_);
        return;
    }
    frame_.outputWidth = width;
    frame_.outputHeight = height;
    restart_preview(frame_);
}

void TransformPanel::ChangeInput(ImageSubWindow* input)
{
    if (!input || input == source_) return;
    reset_preview(frame_);
    if (source_) UserRemove(frame_.panel, source_->handle());
    source_ = input;
    frame_.source = &input->record();
    UserAdd(frame_.panel, input->handle(), frame_.module->title, true);
    main_->workspace()->setActiveSubWindow(input);
    main_->workspace()->setActiveSubWindow(this);
    const int32_t oldWidth = frame_.outputWidth, oldHeight = frame_.outputHeight;
    const bool wasAuto = frame_.autoPreview;
    FrameStart(frame_);
    frame_.autoPreview = wasAuto;
    // The part reads the new input (a box or a size of its own may follow
    // it), and the output size is then the record's.
    if (part_) {
        part_->InputChanged(*this);
        TransformOutputSize(*frame_.module, &input->record().image, *frame_.params,
                            frame_.outputWidth, frame_.outputHeight);
    }
    // A mask must have the input's size.
    if ((frame_.outputWidth != oldWidth || frame_.outputHeight != oldHeight) && amount_) {
        amount_->SetAmountMask(nullptr);
        amount_->SetMaskSize(frame_.outputWidth, frame_.outputHeight);
        frame_.params->amount = amount_->GetAmount();
    }
    restart_preview(frame_);
}

// ---- Messages ---------------------------------------------------------------------------

bool TransformPanel::event(QEvent* event)
{
    if (event->type() == UserMessageEvent::EventType()) {
        auto* e = static_cast<UserMessageEvent*>(event);
        switch (e->message) {
        case kMsgImageChanged: ParamsChanged(); return true;
        case kMsgEscape: Press(kButtonCancel); return true;
        case kMsgEnter: Press(kButtonOk); return true;
        case kMsgTab: FocusNextInPanel(this, true); return true;
        case kMsgBackTab: FocusNextInPanel(this, false); return true;
        default: return true;
        }
    }
    if (event->type() == ControlEvent::EventType()) {
        auto* e = static_cast<ControlEvent*>(event);
        ControlMessage(e->message, e->controlId, e->value);
        return true;
    }
    return QMdiSubWindow::event(event);
}

void TransformPanel::closeEvent(QCloseEvent* event)
{
    if (closing_) {
        QMdiSubWindow::closeEvent(event);
        return;
    }
    // The close box is Cancel.
    event->ignore();
    Press(kButtonCancel);
}

}  // namespace lv
