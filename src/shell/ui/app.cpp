#include "shell/ui/app.h"

#include <QApplication>
#include <QGuiApplication>
#include <QRegularExpression>
#include <QScreen>

#include "files/ui/file_commands.h"
#include "image/display.h"
#include "image/window.h"
#include "shell/errors.h"
#include "shell/preferences.h"
#include "shell/tables.h"
#include "shell/ui/main_window.h"
#include "shell/ui/metrics.h"
#include "shell/ui/panel_keys.h"
#include "shell/ui/progress_box.h"
#include "shell/ui/qt_frontend.h"
#include "shell/ui/settings_store.h"
#include "shell/ui/workspace.h"
#include "synthesis/test_card.h"
#include "transform/controls/ui/color_img.h"
#include "transform/controls/ui/color_picker.h"
#include "transform/controls/ui/image_menu.h"

namespace lv {

void InitDisplay(bool paletteRequested)
{
    const QScreen* screen = QGuiApplication::primaryScreen();
    const int depth = screen ? screen->depth() : 24;
    SetDisplayMode(depth >= 16 && !paletteRequested ? kDisplayTrueColor : kDisplayPalette);
}

Application::Application() = default;

Application::~Application() { Shutdown(); }

bool Application::Start(const QStringList& arguments)
{
    InitEngineTables();
    store_ = std::make_unique<SettingsStore>();
    PreferencesLoad(*store_, CurrentPreferences());
    StateLoad(*store_, CurrentPreferences().recentCount, CurrentState());

    std::string palette;
    const bool paletteRequested =
        qEnvironmentVariable("LUMIVUE_PALETTE") == QLatin1String("1") ||
        (store_->Get(kPreferencesGroup, "palettemode", palette) && palette == "yes");
    InitDisplay(paletteRequested);
    uint8_t identity[256];
    for (int i = 0; i < 256; ++i) identity[i] = static_cast<uint8_t>(i);
    DisplayTablesSet(identity, identity, identity);
    PoolInit();
    InitMetrics();

    QApplication::setWindowIcon(ProgramIcon());
    frame_ = std::make_unique<MainWindow>();
    MainWindow::SetPreferencesStore(store_.get());
    frontEnd_ = std::make_unique<QtFrontEnd>(frame_->workspace());
    InstallFrontEnd(frontEnd_.get());
    keyFilter_ = std::make_unique<PanelKeyFilter>(frame_->workspace());
    // A ColorImg control with no image to offer opens the colour picker.
    ColorImgControl::openPickerFunction = [this](ColorImgControl* control, QColor color) {
        control->SetPicker(OpenColorPicker(frame_->workspace(), 0, 0, QStringLiteral("Color"),
                                           control, control->controlId(), color, 0, 0));
    };
    qApp->installEventFilter(keyFilter_.get());
    // Always maximised, whatever the window manager (or the lack of one)
    // would do with the request alone.
    if (const QScreen* screen = QGuiApplication::primaryScreen())
        frame_->setGeometry(screen->availableGeometry());
    frame_->showMaximized();

    // One optional argument: a picture to open, and then no splash. Until
    // files can be read, "--pattern WIDTHxHEIGHT" opens a test card instead.
    const QStringList args = arguments.mid(1);
    if (args.isEmpty()) {
        frame_->workspace()->ShowSplash();
    } else if (args[0] == QLatin1String("--pattern")) {
        const QRegularExpressionMatch size =
            QRegularExpression(QStringLiteral("^(\\d+)x(\\d+)$")).match(args.value(1));
        Image card;
        int32_t code = kErrOutOfMemory;
        if (size.hasMatch())
            code =
                MakeTestCard(card, kImageColor, size.captured(1).toInt(), size.captured(2).toInt());
        if (!code) code = frame_->ShowNewImage(std::move(card), QString());
        ReportError(code);
    } else {
        ReportError(FileOpen(frame_.get(), args[0], -1));
    }
    return true;
}

void Application::Shutdown()
{
    if (!frame_) return;
    StateSave(*store_, CurrentState());
    MainWindow::SetPreferencesStore(nullptr);
    qApp->removeEventFilter(keyFilter_.get());
    frame_.reset();
    InstallFrontEnd(nullptr);
    frontEnd_.reset();
    keyFilter_.reset();
    PoolFree();
}

}  // namespace lv
