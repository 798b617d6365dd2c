// The editor's start-up and shut-down, in order: the engine's tables, the
// stored preferences and session state, the display, the pool of image
// windows, the frame and its front end, the picture named on the command
// line or the splash; and at the end the session state saved.
#pragma once

#include <QStringList>
#include <memory>

namespace lv {

class MainWindow;
class QtFrontEnd;
class SettingsStore;
class PanelKeyFilter;

class Application {
public:
    Application();
    ~Application();

    // False when start-up failed and the program should end.
    bool Start(const QStringList& arguments);
    void Shutdown();

    MainWindow* frame() const { return frame_.get(); }

private:
    std::unique_ptr<SettingsStore> store_;
    std::unique_ptr<MainWindow> frame_;
    std::unique_ptr<QtFrontEnd> frontEnd_;
    std::unique_ptr<PanelKeyFilter> keyFilter_;
};

// Decides true colour or the palette from the screen's depth; the palette
// emulation is switched on by LUMIVUE_PALETTE=1 in the environment or the
// stored preference "palettemode" "yes".
void InitDisplay(bool paletteRequested);

}  // namespace lv
