// The Preferences panel (File > Preferences): the user's settings, acting
// at once on the live preferences, kept or taken back on OK or Cancel, and
// saved for future sessions when the user says so.
#pragma once

#include <QMdiSubWindow>
#include <vector>

#include "shell/preferences.h"

namespace lv {

class MainWindow;

class PreferencesPanel : public QMdiSubWindow {
public:
    // Opens the panel, or activates the one that is open.
    static void Open(MainWindow* frame, KeyValueStore* store);
    static PreferencesPanel* Current();
    ~PreferencesPanel() override;

    void Accept();  // OK
    void Reject();  // Cancel

protected:
    bool event(QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    PreferencesPanel(MainWindow* frame, KeyValueStore* store);
    void Finish();

    MainWindow* frame_;
    KeyValueStore* store_;
    Preferences saved_;  // taken back by Cancel
    std::vector<QWidget*> controls_;
    bool finishing_ = false;
};

}  // namespace lv
