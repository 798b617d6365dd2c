// The Preferences panel: live colours and lists, OK reading the fields with
// the resolution limited, Cancel taking everything back, and the question
// before saving.
#include <QMdiArea>
#include <QtTest>

#include "image/display.h"
#include "shell/commands.h"
#include "shell/frontend.h"
#include "shell/tables.h"
#include "shell/ui/main_window.h"
#include "shell/ui/message_box.h"
#include "shell/ui/metrics.h"
#include "shell/ui/preferences_panel.h"
#include "shell/ui/qt_frontend.h"
#include "shell/ui/workspace.h"
#include "transform/controls/ui/color_control.h"
#include "transform/controls/ui/control_event.h"
#include "transform/controls/ui/integer_field.h"
#include "transform/controls/ui/pedit.h"
#include "transform/controls/ui/popup_list.h"

using namespace lv;

class PreferencesTest : public QObject {
    Q_OBJECT

private:
    std::unique_ptr<MainWindow> frame_;
    std::unique_ptr<QtFrontEnd> frontEnd_;
    MemoryStore store_;
    QStringList boxes_;
    int32_t answer_ = kAnswerNo;

    template <class Control>
    Control* Find(int32_t id)
    {
        for (QWidget* w : PreferencesPanel::Current()->findChildren<QWidget*>())
            if (auto* c = dynamic_cast<Control*>(w); c && c->controlId() == id) return c;
        return nullptr;
    }

private slots:
    void initTestCase()
    {
        InitEngineTables();
        InitMetrics();
        uint8_t identity[256];
        for (int i = 0; i < 256; ++i) identity[i] = static_cast<uint8_t>(i);
        DisplayTablesSet(identity, identity, identity);
        SetMessageBoxAnswerer([this](const QString& caption, int32_t, const QString& text) {
            boxes_.push_back(caption + "|" + text);
            return answer_;
        });
    }

    void init()
    {
        CurrentPreferences() = Preferences();
        store_.groups.clear();
        boxes_.clear();
        frame_ = std::make_unique<MainWindow>();
        MainWindow::SetPreferencesStore(&store_);
        frontEnd_ = std::make_unique<QtFrontEnd>(frame_->workspace());
        InstallFrontEnd(frontEnd_.get());
        frame_->resize(1000, 800);
        frame_->show();
        QVERIFY(QTest::qWaitForWindowExposed(frame_.get()));
        QVERIFY(frame_->Dispatch(kCmdPreferences));
        QVERIFY(PreferencesPanel::Current());
    }

    void cleanup()
    {
        MainWindow::SetPreferencesStore(nullptr);
        InstallFrontEnd(nullptr);
        frontEnd_.reset();
        frame_.reset();
    }

    void okReadsTheFieldsAndAsksBeforeSaving()
    {
        Find<IntegerControl>(3)->SetValue(12);                   // border width
        Find<PEditControl>(5)->SetText(QStringLiteral("5000"));  // resolution
        answer_ = kAnswerNo;
        PreferencesPanel::Current()->Accept();
        QCOMPARE(boxes_.last(), QStringLiteral("|Save settings for future sessions?"));
        QCOMPARE(CurrentPreferences().borderWidth, 12);
        QCOMPARE(CurrentPreferences().defaultResolution, 1000.0);
        QVERIFY(store_.groups.empty());  // kept for this run only

        QVERIFY(frame_->Dispatch(kCmdPreferences));
        Find<PEditControl>(5)->SetText(QStringLiteral("0"));
        answer_ = kAnswerYes;
        PreferencesPanel::Current()->Accept();
        QCOMPARE(CurrentPreferences().defaultResolution, 1.0);
        QCOMPARE(QString::fromStdString(store_.groups.at("Preferences").at("defaultres")),
                 QStringLiteral("1.00"));
    }

    void coloursActAtOnceAndCancelTakesThemBack()
    {
        PreferencesPanel* panel = PreferencesPanel::Current();
        // A press on the colour control opens the picker in the workspace.
        ColorControl* workspaceColor = Find<ColorControl>(1);
        QVERIFY(workspaceColor);
        QTest::mouseClick(workspaceColor, Qt::LeftButton, {},
                          QPoint(workspaceColor->width() - 5, 5));
        QVERIFY(workspaceColor->picker());
        if (!qEnvironmentVariable("LUMIVUE_SCREENSHOTS").isEmpty()) {
            QTest::qWait(50);
            frame_->grab().save(qEnvironmentVariable("LUMIVUE_SCREENSHOTS") + "/picker.png");
        }
        workspaceColor->ClosePicker();
        SendControlMessage(panel, 1029, 2, 0x102030);  // border colour, live
        QCOMPARE(CurrentPreferences().borderColor[0], 0x10);
        // Confirm on Close: "no" chosen in its list, whose message goes
        // through the list's row to the panel.
        PopupListControl* confirm = Find<PopupListControl>(4);
        QVERIFY(confirm);
        SendControlMessage(confirm, kMsgDropChoice, 4, 0);
        QVERIFY(!CurrentPreferences().confirmClose);
        panel->Reject();
        QCOMPARE(CurrentPreferences().borderColor[0], 255);
        QVERIFY(CurrentPreferences().confirmClose);
        QTest::qWait(20);
        QCOMPARE(PreferencesPanel::Current(), nullptr);
    }
};

QTEST_MAIN(PreferencesTest)
#include "preferences_test.moc"
