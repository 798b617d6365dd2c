// Emboss's panel over a photograph: the radius slider, the Compass and the
// height slider in their places, a release of the Compass setting the angle,
// and an Apply that embosses the picture.
#include <QFile>
#include <QLabel>
#include <QPushButton>
#include <QtTest>

#include "files/ui/file_commands.h"
#include "image/ui/image_window.h"
#include "shell/messages.h"
#include "support/editor_fixture.h"
#include "transform/controls/ui/compass.h"
#include "transform/controls/ui/control_event.h"
#include "transform/ui/panel.h"

using namespace lv;

class EmbossPanelTest : public QObject {
    Q_OBJECT

private:
    test::EditorFixture fx_;

private slots:
    void initTestCase() { fx_.StartEngine(); }
    void init() { QVERIFY(fx_.OpenFrame()); }
    void cleanup()
    {
        delete TransformPanel::Current();
        fx_.CloseFrame();
    }

    void embossesAPhotograph()
    {
        const QString path = QStringLiteral(LUMIVUE_TESTDATA "/photos/LadyBird.jpg");
        if (!QFile::exists(path)) QSKIP("no test pictures");
        QCOMPARE(FileOpen(fx_.frame.get(), path, 1), 0);
        ImageSubWindow* input = fx_.frame->ActiveImage();
        QVERIFY(input);
        QVERIFY(fx_.frame->Dispatch(4040));
        TransformPanel* panel = TransformPanel::Current();
        QVERIFY(panel);
        // The control has no meta-object of its own, so it is found by its type.
        CompassControl* compass = nullptr;
        for (QWidget* w : panel->findChildren<QWidget*>())
            if (auto* c = dynamic_cast<CompassControl*>(w)) compass = c;
        QVERIFY(compass);
        // 135 degrees is 1536 of the 4096 steps of a turn.
        QCOMPARE(compass->value(), 1536);
        QStringList texts;
        for (QLabel* label : panel->findChildren<QLabel*>()) texts << label->text();
        QVERIFY(texts.contains(QStringLiteral("Radius: 1.0")));
        QVERIFY(texts.contains(QStringLiteral("Height: 1.0")));

        // The Compass let go at 1024 steps: a quarter turn, 90 degrees.
        SendControlMessage(compass->parentWidget(), kMsgCompassReleased, compass->controlId(),
                           1024);
        const ParamDecl& angle = panel->module().params[2];
        QCOMPARE(ParamReal(angle, *panel->state().params), 90.0);

        panel->button(2)->click();  // Preview
        QTest::qWait(50);
        panel->grab().save(QStringLiteral("/tmp/emboss-panel.png"));
        fx_.frame->grab().save(QStringLiteral("/tmp/emboss-frame.png"));
        panel->button(4)->click();  // Apply
        int results = 0;
        for (ImageSubWindow* w : ImageWindows(fx_.frame->workspace()))
            if (w != input && w->record().image.kind == kImageColor) ++results;
        QCOMPARE(results, 1);
    }
};

QTEST_MAIN(EmbossPanelTest)
#include "emboss_panel_test.moc"
