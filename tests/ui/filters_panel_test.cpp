// The panels of Blur and Sharpen in the editor on a photograph: the sliders
// appear only for Gaussian and Unsharp Mask, the generic Integer rows stay
// hidden, a released slider sets the radius, and a preview is made.
#include <QFile>
#include <QLabel>
#include <QPushButton>
#include <QtTest>

#include "files/ui/file_commands.h"
#include "filters/filter_panel.h"
#include "image/ui/image_window.h"
#include "support/editor_fixture.h"
#include "transform/controls/ui/control_event.h"
#include "transform/controls/ui/popup_list.h"
#include "transform/controls/ui/slider.h"
#include "transform/ui/panel.h"

using namespace lv;

class FiltersPanelTest : public QObject {
    Q_OBJECT

private:
    test::EditorFixture fx_;

    TransformPanel* OpenOnPhoto(int32_t command)
    {
        const QString path = QStringLiteral(LUMIVUE_TESTDATA "/photos/LadyBird.jpg");
        if (!QFile::exists(path)) return nullptr;
        if (FileOpen(fx_.frame.get(), path, 1) != 0) return nullptr;
        return fx_.frame->Dispatch(command) ? TransformPanel::Current() : nullptr;
    }
    static QList<SliderControl*> Sliders(TransformPanel* panel)
    {
        QList<SliderControl*> sliders;
        for (SliderControl* s : panel->findChildren<SliderControl*>())
            if (s->controlId() == 102 || s->controlId() == 104) sliders.push_back(s);
        return sliders;
    }
    // Chooses a method in the generic list, as a click in its drop-down does.
    static void ChooseMethod(TransformPanel* panel, int32_t method)
    {
        auto* list = dynamic_cast<PopupListControl*>(panel->paramControl(0));
        QVERIFY(list);
        list->SetPopup(method);
    }
    void Shoot(const QString& file)
    {
        TransformPanel::Current()->button(kButtonPreview)->click();
        QTest::qWait(100);
        fx_.frame->grab().save(file);
    }

private slots:
    void initTestCase() { fx_.StartEngine(); }
    void init() { QVERIFY(fx_.OpenFrame()); }
    void cleanup()
    {
        delete TransformPanel::Current();
        fx_.CloseFrame();
    }

    void blurShowsTheRadiusForGaussianOnly()
    {
        if (!QFile::exists(QStringLiteral(LUMIVUE_TESTDATA "/photos/LadyBird.jpg")))
            QSKIP("no test pictures");
        TransformPanel* panel = OpenOnPhoto(4020);
        QVERIFY(panel);
        QVERIFY(!panel->paramControl(1)->isVisibleTo(panel));  // the generic radius
        QCOMPARE(Sliders(panel).size(), 1);
        SliderControl* slider = Sliders(panel).front();
        QVERIFY(!slider->isVisibleTo(panel));
        QCOMPARE(slider->value(), 24);  // radius 3

        const int heightBefore = panel->height();
        ChooseMethod(panel, kBlurGaussian);
        QVERIFY(slider->isVisibleTo(panel));
        QVERIFY(panel->height() > heightBefore);
        auto& params = static_cast<BlurParams&>(*panel->state().params);
        QCOMPARE(params.method, kBlurGaussian);
        // Moving only rewrites the text; the release sets the radius.
        SendControlMessage(slider->parentWidget(), kMsgSliderMoved, 102, PackPair(80, -1));
        QCOMPARE(params.radius, 3);
        auto* text = slider->parentWidget()->findChild<QLabel*>();
        QCOMPARE(text->text(), QStringLiteral("Radius: 10"));
        SendControlMessage(slider->parentWidget(), kMsgSliderReleased, 102, PackPair(80, -1));
        QCOMPARE(params.radius, 10);
        Shoot(QStringLiteral("/tmp/blur-panel.png"));
        QVERIFY(fx_.boxes.isEmpty());

        ChooseMethod(panel, kBlurMedian3);
        QVERIFY(!slider->isVisibleTo(panel));
        QCOMPARE(panel->height(), heightBefore);
    }

    void sharpenShowsRadiusAndThresholdForUnsharpMask()
    {
        if (!QFile::exists(QStringLiteral(LUMIVUE_TESTDATA "/photos/LadyBird.jpg")))
            QSKIP("no test pictures");
        TransformPanel* panel = OpenOnPhoto(4019);
        QVERIFY(panel);
        QCOMPARE(Sliders(panel).size(), 2);
        for (SliderControl* s : Sliders(panel)) QVERIFY(!s->isVisibleTo(panel));
        ChooseMethod(panel, kSharpenUnsharp);
        for (SliderControl* s : Sliders(panel)) QVERIFY(s->isVisibleTo(panel));
        auto& params = static_cast<SharpenParams&>(*panel->state().params);
        SliderControl* threshold = Sliders(panel).back()->controlId() == 104
                                       ? Sliders(panel).back()
                                       : Sliders(panel).front();
        // 164 * 50 / 1024 = 8.0.
        SendControlMessage(threshold->parentWidget(), kMsgSliderReleased, 104, PackPair(164, -1));
        QCOMPARE(params.threshold, 8);
        Shoot(QStringLiteral("/tmp/sharpen-panel.png"));
        QVERIFY(fx_.boxes.isEmpty());
    }
};

QTEST_MAIN(FiltersPanelTest)
#include "filters_panel_test.moc"
