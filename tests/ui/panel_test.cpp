// A transformation panel in the editor, with a test module whose worker
// counts its runs: the button bar, the preview window, results, the lock on
// the input and the questions.
#include <QCheckBox>
#include <QMdiArea>
#include <QPushButton>
#include <QToolButton>
#include <QtTest>

#include "files/ui/file_commands.h"
#include "image/display.h"
#include "image/pixel.h"
#include "image/ui/image_window.h"
#include "image/ui/tools.h"
#include "image/window.h"
#include "shell/commands.h"
#include "shell/errors.h"
#include "shell/tables.h"
#include "shell/ui/events.h"
#include "shell/ui/main_window.h"
#include "shell/ui/message_box.h"
#include "shell/ui/metrics.h"
#include "shell/ui/panel_keys.h"
#include "shell/ui/qt_frontend.h"
#include "shell/ui/workspace.h"
#include "support/editor_fixture.h"
#include "synthesis/test_card.h"
#include "tone/brightness_curve.h"
#include "tone/curves/ui/curve_control.h"
#include "transform/controls/ui/amount_control.h"
#include "transform/controls/ui/control_event.h"
#include "transform/controls/ui/integer_field.h"
#include "transform/controls/ui/pedit.h"
#include "transform/controls/ui/popup_list.h"
#include "transform/controls/ui/slider.h"
#include "transform/point_worker.h"
#include "transform/ui/panel.h"

using namespace lv;

namespace {

int gRuns = 0;

void Invert(const uint8_t* in, uint8_t* out, int32_t pixels, int32_t channels,
            const TransformParams&)
{
    for (int32_t i = 0; i < pixels * channels; ++i) out[i] = static_cast<uint8_t>(255 - in[i]);
}

int32_t CountingWorker(const TransformArgs& args)
{
    ++gRuns;
    return RunPointWorker(args, "Test", Invert);
}

// Opened as Brightness (command 4052, panel kind 29), whose module is not
// registered in this build.
const TransformModule kTest{.name = "panel-test",
                            .title = "Test",
                            .commandId = 4052,
                            .create = NewParams<TransformParams>,
                            .worker = CountingWorker};

// A module whose parameters are one of each kind the panel builds rows for.
struct RowsParams : TransformParams {
    int32_t radius;
    double gamma;
    int32_t mode;
    int32_t complement;
};

const TransformModule kRows{
    .name = "panel-rows",
    .title = "Rows",
    .commandId = 4029,  // Gamma Adjust, not registered in this build
    .params = {{.name = "radius",
                .type = ParamType::Int,
                .field = Field(&RowsParams::radius),
                .minimum = 1,
                .maximum = 50,
                .defaultValue = 3,
                .label = "Radius:",
                .help = "a radius"},
               {.name = "gamma",
                .type = ParamType::Real,
                .field = Field(&RowsParams::gamma),
                .minimum = 0.1,
                .maximum = 10,
                .defaultValue = 2.2,
                .decimals = 2,
                .label = "Gamma:",
                .help = "a gamma"},
               {.name = "mode",
                .type = ParamType::Choice,
                .field = Field(&RowsParams::mode),
                .defaultValue = 1,
                .choiceLabels = "Compute|Darken|Lighten",
                .label = "Mode:",
                .help = "a mode"},
               {.name = "complement",
                .type = ParamType::Flag,
                .field = Field(&RowsParams::complement),
                .label = "Complement",
                .help = "a switch"}},
    .create = NewParams<RowsParams>,
    .worker = CountingWorker,
};

}  // namespace

class PanelTest : public QObject {
    Q_OBJECT

private:
    test::EditorFixture fx_;
    std::unique_ptr<MainWindow>& frame_ = fx_.frame;
    QStringList& boxes_ = fx_.boxes;
    QList<int32_t>& answers_ = fx_.answers;
    ImageSubWindow* input_ = nullptr;

    TransformPanel* OpenPanel()
    {
        if (TransformPanel::Open(frame_.get(), kTest, input_) != 0) return nullptr;
        return TransformPanel::Current();
    }
    int ResultCount() const
    {
        int count = 0;
        for (ImageSubWindow* w : ImageWindows(frame_->workspace()))
            count += w != input_ && w->record().windowKind == kKindImage;
        return count;
    }

    // With LUMIVUE_SCREENSHOTS set to a folder, the frame is saved there as
    // a picture, to look at.
    void Screenshot(const QString& name)
    {
        const QString folder = qEnvironmentVariable("LUMIVUE_SCREENSHOTS");
        if (folder.isEmpty()) return;
        QTest::qWait(50);
        frame_->grab().save(folder + "/" + name + ".png");
    }

    static CurveControl* CurveOf(TransformPanel* panel)
    {
        for (QWidget* child : panel->findChildren<QWidget*>())
            if (auto* curve = dynamic_cast<CurveControl*>(child)) return curve;
        return nullptr;
    }

    // Presses on the curve at level (x, y), drags up or down to (x, toY)
    // and lets go, as a hand on the mouse would.
    static void DragCurve(CurveControl* curve, int32_t x, int32_t y, int32_t toY)
    {
        for (QEvent::Type type :
             {QEvent::MouseButtonPress, QEvent::MouseMove, QEvent::MouseButtonRelease}) {
            const QPoint at = curve->LevelToPixel(x, type == QEvent::MouseButtonPress ? y : toY);
            QMouseEvent event(type, QPointF(at), curve->mapToGlobal(QPointF(at)), Qt::LeftButton,
                              type == QEvent::MouseButtonRelease ? Qt::NoButton : Qt::LeftButton,
                              Qt::NoModifier);
            QCoreApplication::sendEvent(curve, &event);
        }
    }

private slots:
    void initTestCase() { fx_.StartEngine(); }

    void init()
    {
        gRuns = 0;
        QVERIFY(fx_.OpenFrame());
        Image card;
        QCOMPARE(MakeTestCard(card, kImageColor, 900, 600), 0);
        QCOMPARE(frame_->ShowNewImage(std::move(card), QString()), 0);
        input_ = frame_->ActiveImage();
        QVERIFY(input_);
    }

    void cleanup()
    {
        if (TransformPanel* panel = TransformPanel::Current()) delete panel;
        fx_.CloseFrame();
    }

    void openingLocksTheInputAndGreysTheOtherTransformations()
    {
        TransformPanel* panel = OpenPanel();
        QVERIFY(panel);
        QCOMPARE(panel->windowTitle(), QStringLiteral("Test"));
        QCOMPARE(frame_->State().panelKind, 29);
        QVERIFY(!frame_->Dispatch(kCmdNegative));
        QVERIFY(frame_->Dispatch(kCmdZoomOut) || true);  // zoom still works
        input_->close();
        QVERIFY(boxes_.contains(QStringLiteral("Error|Window in use by Test - Cannot close")));
        QVERIFY(ImageWindows(frame_->workspace()).contains(input_));
    }

    void previewAutoAndTheButtons()
    {
        TransformPanel* panel = OpenPanel();
        QVERIFY(panel);
        QTest::mouseClick(panel->button(kButtonPreview), Qt::LeftButton);
        QCOMPARE(gRuns, 1);
        ImageWindow* preview = panel->state().preview;
        QVERIFY(preview);
        QCOMPARE(preview->windowKind, int32_t{kWindowPreview});
        QVERIFY(!panel->button(kButtonPreview)->isEnabled());
        // 900x600 in a 1200x900 frame: reduced to fit half the workspace.
        QVERIFY(preview->zoom <= -2);
        const int32_t m = -preview->zoom;
        QCOMPARE(preview->display.rows[0][0],
                 static_cast<uint8_t>(255 - input_->record().image.rows[0][0]));
        QCOMPARE(preview->display.rows[3][3 * 3 + 1],
                 static_cast<uint8_t>(255 - input_->record().image.rows[3 * m][3 * m * 3 + 1]));

        // Auto: every change runs once; the Preview button stays grey.
        QTest::mouseClick(panel->autoBox(), Qt::LeftButton);
        QVERIFY(panel->autoBox()->isChecked());
        const int before = gRuns;
        SendControlMessage(panel, 1026, 100, 0);  // the Amount control's message
        SendControlMessage(panel, 1026, 100, 0);
        QCOMPARE(gRuns, before + 2);
        QVERIFY(!panel->button(kButtonPreview)->isEnabled());

        // The Amount control's block reaches the worker: half strength.
        AmountControl* amount = nullptr;
        for (QWidget* child : panel->findChildren<QWidget*>())
            if (!amount) amount = dynamic_cast<AmountControl*>(child);
        QVERIFY(amount);
        AmountBlock block = amount->GetAmount();
        block.amount = 512;
        amount->SetAmount(block);
        SendControlMessage(panel, 1026, 100, 0);
        QCOMPARE(panel->state().params->amount.amount, 512);
        const uint8_t in = input_->record().image.rows[0][0];
        QCOMPARE(panel->state().preview->display.rows[0][0],
                 Lerp8(in, static_cast<uint8_t>(255 - in), 128));
        // The way a user gets there: the slider's release reaches the Amount
        // control, and its message climbs from the control's row to the panel.
        SendControlMessage(amount, kMsgSliderReleased, 0, PackPair(256, block.amount2));
        QCOMPARE(panel->state().params->amount.amount, 256);
        SendControlMessage(amount, kMsgSliderReleased, 0, PackPair(512, block.amount2));
        QCOMPARE(panel->state().params->amount.amount, 512);
        Screenshot(QStringLiteral("panel"));

        // A gray picture of the input's size as the Amount mask: two markers.
        Image gray;
        QCOMPARE(MakeTestCard(gray, kImageGray, 900, 600), 0);
        QCOMPARE(frame_->ShowNewImage(std::move(gray), QString()), 0);
        ImageSubWindow* mask = frame_->ActiveImage();
        frame_->workspace()->setActiveSubWindow(panel);
        amount->SetAmountMask(mask->handle());
        QCOMPARE(amount->GetAmount().amount, 0);
        QCOMPARE(amount->GetAmount().amount2, 1024);
        SendControlMessage(panel, 1026, 100, 0);
        QCOMPARE(panel->state().params->amount.mask, &mask->record().image);
        Screenshot(QStringLiteral("amount-mask"));
        amount->SetAmountMask(nullptr);
        SendControlMessage(panel, 1026, 100, 0);

        // The preview closed by hand: Auto off, Preview enabled.
        ImageSubWindow* previewWindow =
            dynamic_cast<ImageSubWindow*>(ObjectOf(panel->state().preview->hWindow));
        QVERIFY(previewWindow);
        previewWindow->close();
        QTest::qWait(20);
        QVERIFY(!panel->autoBox()->isChecked());
        QVERIFY(panel->button(kButtonPreview)->isEnabled());
        QCOMPARE(panel->state().preview, nullptr);
    }

    void previewZoomsAndTabStaysInThePanel()
    {
        TransformPanel* panel = OpenPanel();
        QVERIFY(panel);
        QTest::mouseClick(panel->button(kButtonPreview), Qt::LeftButton);
        ImageWindow* preview = panel->state().preview;
        QVERIFY(preview);
        const int32_t zoom = preview->zoom;
        const int before = gRuns;
        QVERIFY(frame_->Dispatch(kCmdZoomOut));  // the preview is the active window
        QCOMPARE(preview->zoom, zoom - 1);
        QVERIFY(gRuns > before);  // recomputed at the new zoom
        QVERIFY(preview->display.width < 900 / -zoom + 1);

        // Tab cycles among the panel's own controls and never leaves it.
        PanelKeyFilter keys(frame_->workspace());
        qApp->installEventFilter(&keys);
        frame_->workspace()->setActiveSubWindow(panel);
        panel->button(kButtonApply)->setFocus();
        for (int i = 0; i < 12; ++i) {
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
            QVERIFY(panel->isAncestorOf(QApplication::focusWidget()));
        }
        qApp->removeEventFilter(&keys);
    }

    void aPanelOverAMaximisedPictureKeepsItsOwnSize()
    {
        input_->showMaximized();
        TransformPanel* panel = OpenPanel();
        QVERIFY(panel);
        QVERIFY(!panel->isMaximized());
        QVERIFY(panel->width() < frame_->workspace()->viewport()->width());
        QTest::mouseClick(panel->button(kButtonPreview), Qt::LeftButton);
        QVERIFY(panel->state().preview);
        QVERIFY(!panel->isMaximized());
        QTest::mouseClick(panel->button(kButtonCancel), Qt::LeftButton);
        input_->showNormal();
    }

    void applyTwiceThenOkComputesNothingMore()
    {
        TransformPanel* panel = OpenPanel();
        QVERIFY(panel);
        QTest::mouseClick(panel->button(kButtonApply), Qt::LeftButton);
        QTest::mouseClick(panel->button(kButtonApply), Qt::LeftButton);
        QCOMPARE(gRuns, 2);
        QCOMPARE(ResultCount(), 2);
        // The result is active, and the panel still above it.
        QCoreApplication::processEvents();
        QVERIFY(frame_->workspace()->activeSubWindow() != panel);
        QCOMPARE(frame_->workspace()->subWindowList(QMdiArea::StackingOrder).last(),
                 static_cast<QMdiSubWindow*>(panel));
        QTest::mouseClick(panel->button(kButtonOk), Qt::LeftButton);
        QCOMPARE(gRuns, 2);
        QTest::qWait(20);
        QCOMPARE(TransformPanel::Current(), nullptr);
        QCOMPARE(frame_->workspace()->activeSubWindow(), input_);
        // The results are ordinary, modified image windows; the input is free.
        for (ImageSubWindow* w : ImageWindows(frame_->workspace()))
            if (w != input_) QVERIFY(w->record().modified);
        QVERIFY(!UserFindLock(input_->handle()));
    }

    void declaredParametersGetTheirRowsAndFillTheRecord()
    {
        QCOMPARE(TransformPanel::Open(frame_.get(), kRows, input_), 0);
        TransformPanel* panel = TransformPanel::Current();
        QVERIFY(panel);
        auto& params = static_cast<RowsParams&>(*panel->state().params);
        QCOMPARE(params.radius, 3);
        auto* radius = dynamic_cast<IntegerControl*>(panel->paramControl(0));
        auto* gamma = dynamic_cast<PEditControl*>(panel->paramControl(1));
        auto* mode = dynamic_cast<PopupListControl*>(panel->paramControl(2));
        auto* complement = dynamic_cast<QCheckBox*>(panel->paramControl(3));
        QVERIFY(radius && gamma && mode && complement);
        // The rows show the declared defaults.
        QCOMPARE(radius->value(), 3);
        QCOMPARE(gamma->text(), QStringLiteral("2.20"));
        QCOMPARE(mode->current(), 1);
        QVERIFY(!complement->isChecked());

        // Typed and chosen by hand, through the rows; the preview follows
        // each change with Auto on.
        QTest::mouseClick(panel->autoBox(), Qt::LeftButton);
        const int runs = gRuns;
        radius->edit()->selectAll();
        QTest::keyClicks(radius->edit(), "12");
        QCOMPARE(params.radius, 12);
        gamma->edit()->selectAll();
        QTest::keyClicks(gamma->edit(), "1.5");
        QCOMPARE(params.gamma, 1.5);
        // Out of range: the record keeps the last good value.
        gamma->edit()->selectAll();
        QTest::keyClicks(gamma->edit(), "20");
        QCOMPARE(params.gamma, 2.0);
        SendControlMessage(mode, kMsgDropChoice, mode->controlId(), 2);
        QCOMPARE(params.mode, 2);
        QTest::mouseClick(complement, Qt::LeftButton);
        QCOMPARE(params.complement, 1);
        QVERIFY(gRuns > runs);
        QTest::mouseClick(panel->button(kButtonCancel), Qt::LeftButton);
        QTest::qWait(20);
    }

    void equalizeOpensFromItsMenuCommand()
    {
        // A registered module with a panel makes its menu command live.
        QVERIFY(frame_->Dispatch(4044));
        TransformPanel* panel = TransformPanel::Current();
        QVERIFY(panel);
        QCOMPARE(panel->windowTitle(), QStringLiteral("Equalize"));
        QTest::mouseClick(panel->button(kButtonApply), Qt::LeftButton);
        QCOMPARE(ResultCount(), 1);
        QTest::mouseClick(panel->button(kButtonCancel), Qt::LeftButton);
        QTest::qWait(20);
        QCOMPARE(TransformPanel::Current(), nullptr);
    }

    void brightnessCurveDrawsItsCurveAndFollowsTheInput()
    {
        QVERIFY(frame_->Dispatch(4050));
        TransformPanel* panel = TransformPanel::Current();
        QVERIFY(panel);
        QCOMPARE(panel->windowTitle(), QStringLiteral("Brightness Curve"));
        CurveControl* curve = CurveOf(panel);
        QVERIFY(curve);
        // The command line's curve file has no row; the colour space has.
        QVERIFY(!panel->paramControl(0));
        auto* list = dynamic_cast<PopupListControl*>(panel->paramControl(1));
        QVERIFY(list);
        QVERIFY(!list->parentWidget()->isHidden());

        // A point dragged from the diagonal up: the table reaches the
        // parameters at the release, through the control's row.
        DragCurve(curve, 64, 64, 128);
        auto& params = static_cast<BrightnessCurveParams&>(*panel->state().params);
        QVERIFY(std::abs(params.table[64] - 128) <= 2);
        QVERIFY(params.table[200] > 200 && params.table[255] == 255);
        Screenshot(QStringLiteral("brightness-curve"));

        // Applied: a gray pixel of the card gets brighter, in value.
        QTest::mouseClick(panel->button(kButtonApply), Qt::LeftButton);
        QCOMPARE(ResultCount(), 1);
        const Image& in = input_->record().image;
        const Image* out = nullptr;
        for (ImageSubWindow* w : ImageWindows(frame_->workspace()))
            if (w != input_ && w->record().windowKind == kKindImage) out = &w->record().image;
        QVERIFY(out);
        int64_t before = 0, after = 0;
        for (int32_t y = 0; y < in.height; y += 7)
            for (int32_t x = 0; x < in.width * 3; x += 5) {
                before += in.rows[y][x];
                after += out->rows[y][x];
            }
        QVERIFY(after > before);

        // RGB from the list: the parameter follows.
        SendControlMessage(list, kMsgDropChoice, list->controlId(), 2);
        QCOMPARE(params.colorSpace, int32_t{kColorSpaceRgb});

        // A gray input hides the list; the curve stays.
        Image gray;
        QCOMPARE(MakeTestCard(gray, kImageGray, 300, 200), 0);
        QCOMPARE(frame_->ShowNewImage(std::move(gray), QString()), 0);
        ImageSubWindow* grayWindow = frame_->ActiveImage();
        panel->ChangeInput(grayWindow);
        QCOMPARE(panel->sourceWindow(), grayWindow);
        QVERIFY(list->parentWidget()->isHidden());
        QVERIFY(std::abs(params.table[64] - 128) <= 2);
        QTest::mouseClick(panel->button(kButtonCancel), Qt::LeftButton);
        QTest::qWait(20);
        QCOMPARE(TransformPanel::Current(), nullptr);
    }

    void brightnessCurveProbeMarksTheLevelUnderThePointer()
    {
        QVERIFY(frame_->Dispatch(4050));
        TransformPanel* panel = TransformPanel::Current();
        QVERIFY(panel);
        CurveControl* curve = CurveOf(panel);
        QVERIFY(curve);
        QCOMPARE(curve->probeChannel(), 1);  // colour in HSV: the value
        QVERIFY(curve->probeButton()->isEnabled());
        curve->probeButton()->click();
        QCOMPARE(CurrentTool(), int32_t{kToolProbe});

        // Any image window can be probed: one of a single colour here.
        auto flat = [this](uint8_t red, uint8_t green, uint8_t blue) {
            Image image;
            if (ImageAlloc(image, kImageColor, 120, 90, 72.0) != 0) return (ImageSubWindow*)nullptr;
            for (int32_t y = 0; y < 90; ++y)
                for (int32_t x = 0; x < 120; ++x) {
                    image.rows[y][3 * x] = blue;
                    image.rows[y][3 * x + 1] = green;
                    image.rows[y][3 * x + 2] = red;
                }
            if (frame_->ShowNewImage(std::move(image), QString()) != 0)
                return (ImageSubWindow*)nullptr;
            return frame_->ActiveImage();
        };
        ImageSubWindow* orange = flat(200, 100, 0);
        QVERIFY(orange);
        QWidget* client = orange->view()->viewport();
        QTest::mousePress(client, Qt::LeftButton, {}, QPoint(30, 20));
        QCOMPARE(curve->probeLevel(), 200);
        QTest::mouseRelease(client, Qt::LeftButton, {}, QPoint(30, 20));
        QCOMPARE(curve->probeLevel(), -1);

        // RGB probes all three channels.
        auto* list = dynamic_cast<PopupListControl*>(panel->paramControl(1));
        QVERIFY(list);
        SendControlMessage(list, kMsgDropChoice, list->controlId(), 2);
        QCOMPARE(curve->probeChannel(), 5);
        QVERIFY(curve->probeButton()->isChecked());
        QTest::mousePress(client, Qt::LeftButton, {}, QPoint(30, 20));
        QCOMPARE(curve->probeLevels()[0], 200);
        QCOMPARE(curve->probeLevels()[1], 100);
        QCOMPARE(curve->probeLevels()[2], 0);
        Screenshot(QStringLiteral("probe"));
        QTest::mouseRelease(client, Qt::LeftButton, {}, QPoint(30, 20));

        // A preview is no picture to probe.
        QTest::mouseClick(panel->button(kButtonPreview), Qt::LeftButton);
        ImageSubWindow* preview = nullptr;
        for (ImageSubWindow* w : ImageWindows(frame_->workspace()))
            if (w->record().windowKind == kWindowPreview) preview = w;
        QVERIFY(preview);
        QTest::mousePress(preview->view()->viewport(), Qt::LeftButton, {}, QPoint(10, 10));
        QCOMPARE(boxes_.last(), QStringLiteral("Error|Tools/Probes don't work on preview windows"));
        QTest::mouseRelease(preview->view()->viewport(), Qt::LeftButton, {}, QPoint(10, 10));

        // Gray input: one channel again; closing the panel ends the probe.
        Image gray;
        QCOMPARE(MakeTestCard(gray, kImageGray, 120, 90), 0);
        QCOMPARE(frame_->ShowNewImage(std::move(gray), QString()), 0);
        panel->ChangeInput(frame_->ActiveImage());
        QCOMPARE(curve->probeChannel(), 1);
        QVERIFY(curve->probeButton()->isChecked());
        QTest::mouseClick(panel->button(kButtonCancel), Qt::LeftButton);
        QTest::qWait(20);
        QCOMPARE(CurrentTool(), int32_t{kToolNone});
    }

    void brightnessCurveOnAPhotograph()
    {
        // The documentation's picture of the panel at work, made only when
        // screenshots are asked for and the shared photographs are here.
        const QString photo = QStringLiteral(LUMIVUE_TESTDATA "/photos/Dune.jpg");
        if (qEnvironmentVariable("LUMIVUE_SCREENSHOTS").isEmpty() || !QFile::exists(photo))
            QSKIP("no screenshot folder or no photograph");
        QCOMPARE(FileOpen(frame_.get(), photo, 1), 0);
        QVERIFY(frame_->Dispatch(4050));
        TransformPanel* panel = TransformPanel::Current();
        QVERIFY(panel);
        CurveControl* curve = CurveOf(panel);
        QVERIFY(curve);
        // A gentle S: shadows down, highlights up.
        DragCurve(curve, 64, 64, 48);
        DragCurve(curve, 192, 192, 212);
        QTest::mouseClick(panel->button(kButtonPreview), Qt::LeftButton);
        QVERIFY(panel->state().preview);
        Screenshot(QStringLiteral("brightness-curve-photo"));
    }

    void everyPanelOnAPhotograph()
    {
        // The help's pictures: every transformation's panel with its
        // preview, made only when screenshots are asked for and the shared
        // photographs are here. Each panel must open and preview.
        const QString photo = QStringLiteral(LUMIVUE_TESTDATA "/photos/LadyBird.jpg");
        if (qEnvironmentVariable("LUMIVUE_SCREENSHOTS").isEmpty() || !QFile::exists(photo))
            QSKIP("no screenshot folder or no photograph");
        QCOMPARE(FileOpen(frame_.get(), photo, 1), 0);
        ImageSubWindow* picture = frame_->ActiveImage();
        QVERIFY(picture);
        for (const TransformModule& m : Transforms()) {
            if (!m.commandId || !PanelKindOf(m.commandId)) continue;
            frame_->workspace()->setActiveSubWindow(picture);
            QVERIFY2(frame_->Dispatch(m.commandId), m.name);
            TransformPanel* panel = TransformPanel::Current();
            QVERIFY2(panel, m.name);
            if (QPushButton* preview = panel->button(kButtonPreview))
                QTest::mouseClick(preview, Qt::LeftButton);
            Screenshot(QStringLiteral("screenshot-") + QString::fromLatin1(m.name));
            QTest::mouseClick(panel->button(kButtonCancel), Qt::LeftButton);
            QTest::qWait(20);
            QVERIFY2(!TransformPanel::Current(), m.name);
        }
    }

    void escapeCancelsAndClosingTheFrameAsksFirst()
    {
        TransformPanel* panel = OpenPanel();
        QVERIFY(panel);
        answers_ = {kAnswerNo};
        QVERIFY(!frame_->close());
        QVERIFY(boxes_.contains(QStringLiteral("|Abort transformation in progress?")));
        QVERIFY(TransformPanel::Current());
        UserMessageEvent escape(kMsgEscape, nullptr);
        QCoreApplication::sendEvent(panel, &escape);
        QTest::qWait(20);
        QCOMPARE(TransformPanel::Current(), nullptr);
        QCOMPARE(ResultCount(), 0);
    }
};

QTEST_MAIN(PanelTest)
#include "panel_test.moc"
