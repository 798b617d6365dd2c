// What every test of the editor sets up: the engine's start-up, a frame
// with its Qt front end, and message boxes answered from a script and
// written down as "caption|text".
#pragma once

#include <QList>
#include <QStringList>
#include <QtTest>
#include <memory>

#include "image/display.h"
#include "image/window.h"
#include "shell/frontend.h"
#include "shell/tables.h"
#include "shell/ui/main_window.h"
#include "shell/ui/message_box.h"
#include "shell/ui/metrics.h"
#include "shell/ui/qt_frontend.h"
#include "shell/ui/workspace.h"

namespace lv::test {

struct EditorFixture {
    std::unique_ptr<MainWindow> frame;
    std::unique_ptr<QtFrontEnd> frontEnd;
    QStringList boxes;       // every message box shown
    QList<int32_t> answers;  // answers to give, in order; then OK or Yes

    // Once per test program: tables, the pool, metrics, identity display
    // tables, and the scripted message boxes.
    void StartEngine()
    {
        InitEngineTables();
        PoolInit();
        InitMetrics();
        uint8_t identity[256];
        for (int i = 0; i < 256; ++i) identity[i] = static_cast<uint8_t>(i);
        DisplayTablesSet(identity, identity, identity);
        SetMessageBoxAnswerer([this](const QString& caption, int32_t mode, const QString& text) {
            boxes.push_back(caption + "|" + text);
            if (!answers.isEmpty()) return answers.takeFirst();
            return mode == kBoxYesNo || mode == kBoxYesNoCancel ? int32_t{kAnswerYes}
                                                                : int32_t{kAnswerOk};
        });
    }

    // Before each test: a fresh frame on screen. False when it never showed.
    bool OpenFrame(int width = 1200, int height = 900)
    {
        boxes.clear();
        answers.clear();
        frame = std::make_unique<MainWindow>();
        frontEnd = std::make_unique<QtFrontEnd>(frame->workspace());
        InstallFrontEnd(frontEnd.get());
        frame->resize(width, height);
        frame->show();
        return QTest::qWaitForWindowExposed(frame.get());
    }

    // After each test.
    void CloseFrame()
    {
        frame->CloseAllWindows();
        InstallFrontEnd(nullptr);
        frontEnd.reset();
        frame.reset();
        SetDisplayMode(kDisplayTrueColor);
    }
};

}  // namespace lv::test
