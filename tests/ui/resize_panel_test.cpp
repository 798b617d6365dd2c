// Resize's panel in the editor: a typed width carries the height along and
// OK makes a window of that size; Tab goes round the three boxes; Preserve
// locks the sizes; another input reloads both columns.
#include <QLabel>
#include <QPushButton>
#include <QtTest>

#include "image/ui/image_window.h"
#include "shell/ui/panel_keys.h"
#include "support/editor_fixture.h"
#include "synthesis/test_card.h"
#include "transform/controls/ui/pedit.h"
#include "transform/controls/ui/popup_list.h"
#include "transform/ui/panel.h"

using namespace lv;

class ResizePanelTest : public QObject {
    Q_OBJECT

private:
    test::EditorFixture fx_;
    ImageSubWindow* input_ = nullptr;
    TransformPanel* panel_ = nullptr;

    template <class Control = PEditControl>
    Control* ControlOf(int32_t id)
    {
        for (Control* control : panel_->findChildren<Control*>())
            if (control->controlId() == id) return control;
        return nullptr;
    }
    double Param(const char* name)
    {
        const ParamDecl& p = *FindParam(panel_->module(), name);
        return p.type == ParamType::Real ? ParamReal(p, *panel_->state().params)
                                         : ParamInt(p, *panel_->state().params);
    }
    QStringList Texts()
    {
        QStringList texts;
        for (QLabel* label : panel_->findChildren<QLabel*>()) texts << label->text();
        return texts;
    }
    // All of the box's text replaced, key by key.
    void Type(int32_t id, const char* text)
    {
        ControlOf(id)->edit()->setFocus();
        ControlOf(id)->edit()->selectAll();
        QTest::keyClicks(ControlOf(id)->edit(), QString::fromLatin1(text));
    }

private slots:
    void initTestCase() { fx_.StartEngine(); }

    void init()
    {
        QVERIFY(fx_.OpenFrame());
        Image card;  // 300 dpi
        QCOMPARE(MakeTestCard(card, kImageColor, 640, 480), 0);
        QCOMPARE(fx_.frame->ShowNewImage(std::move(card), QString()), 0);
        input_ = fx_.frame->ActiveImage();
        QVERIFY(fx_.frame->Dispatch(4003));
        panel_ = TransformPanel::Current();
        QVERIFY(panel_);
    }

    void cleanup()
    {
        if (TransformPanel* panel = TransformPanel::Current()) delete panel;
        fx_.CloseFrame();
    }

    void typedWidthCarriesTheHeightAndOkMakesThatSize()
    {
        QCOMPARE(panel_->button(kButtonPreview), nullptr);  // the short bar
        QCOMPARE(ControlOf(102)->text(), QStringLiteral("300.00"));
        Type(100, "320");
        QCOMPARE(ControlOf(101)->text(), QStringLiteral("240"));
        QCOMPARE(Param("width"), 320.0);
        QCOMPARE(Param("height"), 240.0);
        QVERIFY(Texts().contains(QStringLiteral("0.230MB")));  // 240 rows of 960 bytes
        const QString folder = qEnvironmentVariable("LUMIVUE_SCREENSHOTS");
        if (!folder.isEmpty()) fx_.frame->grab().save(folder + "/resize-panel.png");

        QTest::mouseClick(panel_->button(kButtonOk), Qt::LeftButton);
        QTest::qWait(20);
        QCOMPARE(TransformPanel::Current(), nullptr);
        const QList<ImageSubWindow*> windows = ImageWindows(fx_.frame->workspace());
        QCOMPARE(windows.size(), 2);
        const Image& result = windows[windows[0] == input_ ? 1 : 0]->record().image;
        QCOMPARE(result.width, 320);
        QCOMPARE(result.height, 240);
    }

    void tabGoesRoundTheBoxesAndPreserveLocksTheSizes()
    {
        QLineEdit* boxes[3] = {ControlOf(100)->edit(), ControlOf(101)->edit(),
                               ControlOf(102)->edit()};
        // Through the editor's key filter, then straight to the boxes.
        PanelKeyFilter keys(fx_.frame->workspace());
        qApp->installEventFilter(&keys);
        fx_.frame->workspace()->setActiveSubWindow(panel_);
        boxes[0]->setFocus();
        for (int i : {1, 2, 0}) {
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
            QCOMPARE(QApplication::focusWidget(), boxes[i]);
            QCOMPARE(boxes[i]->selectedText(), boxes[i]->text());
        }
        qApp->removeEventFilter(&keys);
        QTest::keyClick(boxes[0], Qt::Key_Backtab);
        QCOMPARE(QApplication::focusWidget(), boxes[2]);

        ControlOf<PopupListControl>(103)->SetPopup(1);  // File Size and Proportions
        QVERIFY(!boxes[0]->isEnabled() && !boxes[1]->isEnabled());
        QTest::keyClick(boxes[2], Qt::Key_Tab);
        QCOMPARE(QApplication::focusWidget(), boxes[2]);
        Type(102, "600");
        QCOMPARE(Param("width"), 640.0);
        QCOMPARE(Param("resolution"), 600.0);
    }

    void anotherInputReloadsBothColumns()
    {
        Type(100, "64");
        Image card;
        QCOMPARE(MakeTestCard(card, kImageGray, 200, 100), 0);
        QCOMPARE(fx_.frame->ShowNewImage(std::move(card), QString()), 0);
        panel_->ChangeInput(fx_.frame->ActiveImage());
        QCOMPARE(ControlOf(100)->text(), QStringLiteral("200"));
        QCOMPARE(panel_->state().outputWidth, 200);
        QCOMPARE(panel_->state().outputHeight, 100);
        QVERIFY(Texts().contains(QStringLiteral("0.020MB")));  // 100 rows of 200 bytes
        QVERIFY(!Texts().contains(QStringLiteral("0.922MB")));
    }
};

QTEST_MAIN(ResizePanelTest)
#include "resize_panel_test.moc"
