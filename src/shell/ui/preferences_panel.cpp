#include "shell/ui/preferences_panel.h"

#include <QCloseEvent>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QMdiArea>
#include <QPushButton>
#include <QVBoxLayout>

#include "image/pixel.h"
#include "image/ui/image_window.h"
#include "shell/commands.h"
#include "shell/errors.h"
#include "shell/frontend.h"
#include "shell/messages.h"
#include "shell/text.h"
#include "shell/ui/events.h"
#include "shell/ui/main_window.h"
#include "shell/ui/metrics.h"
#include "shell/ui/panel_keys.h"
#include "shell/ui/workspace.h"
#include "transform/controls/slider_math.h"
#include "transform/controls/ui/color_control.h"
#include "transform/controls/ui/color_picker.h"
#include "transform/controls/ui/control_event.h"
#include "transform/controls/ui/integer_field.h"
#include "transform/controls/ui/pedit.h"
#include "transform/controls/ui/popup_list.h"

namespace lv {

namespace {

PreferencesPanel* gCurrent = nullptr;

enum ControlId : int32_t {
    kWorkspaceColor = 1,
    kBorderColor,
    kBorderWidth,
    kConfirm,
    kResolution,
    kUndo,
    kListLength,
    kOpenType,
    kSaveType,
    kPcdDirectory,
    kStartupDirectory,
    kTempDirectory,
    kOrient,
};

QColor ColorOf(const std::array<uint8_t, 3>& c) { return QColor(c[0], c[1], c[2]); }

void Store(std::array<uint8_t, 3>& c, QColor color)
{
    c = {static_cast<uint8_t>(color.red()), static_cast<uint8_t>(color.green()),
         static_cast<uint8_t>(color.blue())};
}

// Every window repaints with the preferences as they now stand.
void RefreshAllWindows(MainWindow* frame)
{
    frame->workspace()->UpdateBackground();
    for (QMdiSubWindow* w : frame->workspace()->subWindowList()) w->update();
    for (ImageSubWindow* w : ImageWindows(frame->workspace())) w->view()->viewport()->update();
    frame->update();
}

}  // namespace

PreferencesPanel* PreferencesPanel::Current() { return gCurrent; }

void PreferencesPanel::Open(MainWindow* frame, KeyValueStore* store)
{
    if (gCurrent) {
        frame->workspace()->setActiveSubWindow(gCurrent);
        return;
    }
    auto* panel = new PreferencesPanel(frame, store);
    frame->workspace()->addSubWindow(panel);
    panel->adjustSize();
    const QSize area = frame->workspace()->viewport()->size();
    panel->move((area.width() - panel->width()) / 2, (area.height() - panel->height()) / 2);
    panel->show();
    frame->workspace()->setActiveSubWindow(panel);
}

PreferencesPanel::PreferencesPanel(MainWindow* frame, KeyValueStore* store)
    : frame_(frame), store_(store), saved_(CurrentPreferences())
{
    gCurrent = this;
    setAttribute(Qt::WA_DeleteOnClose);
    ClearSystemMenuKeys(this);
    setProperty("lvWindowKind", kKindPreferences);
    setWindowTitle(QStringLiteral("Preferences"));
    const Preferences& p = CurrentPreferences();

    auto* body = new QWidget;
    body->setFont(Metrics().fontSystem);
    body->setAutoFillBackground(true);
    QPalette gray = body->palette();
    gray.setColor(QPalette::Window, QColor(0x80, 0x80, 0x80));
    body->setPalette(gray);
    auto* layout = new QVBoxLayout(body);
    // OK and Cancel in the order of the desktop the program runs on.
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    layout->addWidget(buttons);
    connect(buttons->button(QDialogButtonBox::Cancel), &QPushButton::clicked, this,
            [this] { Reject(); });
    connect(buttons->button(QDialogButtonBox::Ok), &QPushButton::clicked, this,
            [this] { Accept(); });

    // Each control sits in a row of its own, which passes its messages on to
    // the panel; the labels stand in one column, so that the fields line up.
    const char* const labels[] = {"Workspace Color:",
                                  "Border Color:",
                                  "Border Width:",
                                  "Confirm on Close:",
                                  "Turn by EXIF Orientation:",
                                  "Resolution (dpi):",
                                  "Undo:",
                                  "Length of File List:",
                                  "Default File Open Type:",
                                  "Default File Save Type:",
                                  "PhotoCD Directory:",
                                  "Startup Directory:",
                                  "Temporary File Directory:"};
    int32_t column = 0;
    for (const char* label : labels)
        column = std::max(column, ControlLabelWidth(QString::fromLatin1(label)));
    auto row = [&](const char* label, auto make) {
        auto* holder = new ControlRow(this);
        QWidget* control = make(holder);
        auto* caption = new QLabel(QString::fromLatin1(label), holder);
        caption->setGeometry(0, 0, column, control->height());
        control->move(column, 0);
        holder->setMinimumSize(column + control->width(), control->height());
        layout->addWidget(holder);
        controls_.push_back(control);
        return control;
    };
    auto popup = [&](int32_t id, const char* label, std::vector<std::string> entries, int32_t at) {
        row(label, [&](QWidget* h) {
            return new PopupListControl(0, 0, h, at, PackPopupText("", entries), id);
        });
    };
    row("Workspace Color:", [&](QWidget* h) {
        return new ColorControl(h, 0, 0, QString(), QStringLiteral("Workspace Color"),
                                ColorOf(p.workspaceColor), kWorkspaceColor);
    });
    row("Border Color:", [&](QWidget* h) {
        return new ColorControl(h, 0, 0, QString(), QStringLiteral("Border Color"),
                                ColorOf(p.borderColor), kBorderColor);
    });
    row("Border Width:", [&](QWidget* h) {
        return new IntegerControl(0, 0, 60, h, QString(), p.borderWidth, 0, 32, kBorderWidth);
    });
    popup(kConfirm, "Confirm on Close:", {"no", "yes"}, p.confirmClose ? 1 : 0);
    popup(kOrient, "Turn by EXIF Orientation:", {"no", "yes"}, p.orientOnOpen ? 1 : 0);
    row("Resolution (dpi):", [&](QWidget* h) {
        return new PEditControl(0, 0, 90, h, QString(),
                                QString::fromStdString(FormatText("%1f", p.defaultResolution)),
                                kResolution);
    });
    popup(kUndo, "Undo:", {"none", "single level", "multilevel"}, std::clamp(p.undoLevels, 0, 2));
    row("Length of File List:", [&](QWidget* h) {
        return new IntegerControl(0, 0, 60, h, QString(), p.recentCount, 0, 10, kListLength);
    });
    // The positions are stored plus 1, and used as the Open dialog's filter
    // as they stand.
    popup(kOpenType, "Default File Open Type:",
          {"All Files", "TIFF", "JPEG", "BMP", "Targa", "PCX", "GIF", "PhotoCD 512x768",
           "PhotoCD 1024x1536", "PhotoCD 2048x3072", "PNG"},
          std::clamp(p.defaultOpenFilter - 1, 0, 10));
    popup(kSaveType,
          "Default File Save Type:", {"TIFF", "JPEG", "BMP", "Targa", "PCX", "GIF", "EPS"},
          std::clamp(p.defaultSaveFilter - 1, 0, 6));
    const std::pair<int32_t, std::pair<const char*, const std::string*>> directories[] = {
        {kPcdDirectory, {"PhotoCD Directory:", &p.pcdDirectory}},
        {kStartupDirectory, {"Startup Directory:", &p.startupDirectory}},
        {kTempDirectory, {"Temporary File Directory:", &p.tempDirectory}},
    };
    for (const auto& [id, d] : directories) {
        auto* edit = static_cast<PEditControl*>(row(d.first, [&](QWidget* h) {
            return new PEditControl(0, 0, 260, h, QString(), QString::fromStdString(*d.second), id);
        }));
        // A folder can be picked as well as typed.
        QWidget* holder = edit->parentWidget();
        auto* browse = new QPushButton(QStringLiteral("Browse..."), holder);
        browse->setGeometry(edit->x() + edit->width() + Metrics().margin, 0,
                            browse->sizeHint().width(), edit->height());
        holder->setMinimumWidth(browse->x() + browse->width());
        const QString title = QString::fromLatin1(d.first).chopped(1);
        connect(browse, &QPushButton::clicked, this, [this, edit, title] {
            const QString folder =
                QFileDialog::getExistingDirectory(this, title, edit->edit()->text());
            if (!folder.isEmpty()) edit->SetText(folder);
        });
    }
    setWidget(body);
}

PreferencesPanel::~PreferencesPanel()
{
    if (gCurrent == this) gCurrent = nullptr;
}

bool PreferencesPanel::event(QEvent* event)
{
    if (event->type() == ControlEvent::EventType()) {
        // Colours and lists act at once on the live preferences.
        auto* e = static_cast<ControlEvent*>(event);
        Preferences& p = CurrentPreferences();
        const int32_t value = static_cast<int32_t>(e->value);
        switch (e->message == kMsgColor || e->message == kMsgValueChanged ? e->controlId : 0) {
        case kWorkspaceColor: Store(p.workspaceColor, ColorFromValue(e->value)); break;
        case kBorderColor: Store(p.borderColor, ColorFromValue(e->value)); break;
        case kConfirm: p.confirmClose = value == 1; break;
        case kOrient: p.orientOnOpen = value == 1; break;
        case kUndo: p.undoLevels = value; break;
        case kOpenType: p.defaultOpenFilter = value + 1; break;
        case kSaveType: p.defaultSaveFilter = value + 1; break;
        default: return true;
        }
        RefreshAllWindows(frame_);
        return true;
    }
    if (event->type() == UserMessageEvent::EventType()) {
        auto* e = static_cast<UserMessageEvent*>(event);
        if (e->message == kMsgEnter) Accept();
        if (e->message == kMsgEscape) Reject();
        if (e->message == kMsgTab) FocusNextInPanel(this, true);
        if (e->message == kMsgBackTab) FocusNextInPanel(this, false);
        return true;
    }
    return QMdiSubWindow::event(event);
}

void PreferencesPanel::Accept()
{
    Preferences& p = CurrentPreferences();
    for (QWidget* control : controls_) {
        if (auto* integer = dynamic_cast<IntegerControl*>(control)) {
            if (integer->controlId() == kBorderWidth) p.borderWidth = integer->value();
            if (integer->controlId() == kListLength) p.recentCount = integer->value();
        } else if (auto* edit = dynamic_cast<PEditControl*>(control)) {
            const std::string text = edit->text().toStdString();
            switch (edit->controlId()) {
            case kResolution: {
                double dpi = 0.0;
                if (ParseReal(text, dpi) == 0) p.defaultResolution = std::clamp(dpi, 1.0, 1000.0);
                break;
            }
            case kPcdDirectory: p.pcdDirectory = text; break;
            case kStartupDirectory: p.startupDirectory = text; break;
            case kTempDirectory: p.tempDirectory = text; break;
            default: break;
            }
        }
    }
    if (MessageBoxShow("", kBoxYesNo, "Save settings for future sessions?") == kAnswerYes && store_)
        ReportError(PreferencesSave(*store_, p));
    Finish();
}

void PreferencesPanel::Reject()
{
    CurrentPreferences() = saved_;
    Finish();
}

void PreferencesPanel::Finish()
{
    finishing_ = true;
    RefreshAllWindows(frame_);
    if (gCurrent == this) gCurrent = nullptr;
    deleteLater();
}

void PreferencesPanel::closeEvent(QCloseEvent* event)
{
    if (finishing_) {
        QMdiSubWindow::closeEvent(event);
        return;
    }
    // Closing the panel is Cancel.
    event->ignore();
    Reject();
}

}  // namespace lv
