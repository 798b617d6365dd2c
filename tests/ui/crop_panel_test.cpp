// Crop in the editor: the panel's rows, the box dragged on the input window
// through the crop tool, the margins' arrows, the proportions, and the
// result of OK; then the box drawn over a photograph, to look at.
#include <QFile>
#include <QLineEdit>
#include <QMdiArea>
#include <QPushButton>
#include <QToolButton>
#include <QtTest>

#include "files/ui/file_commands.h"
#include "geometry/crop.h"
#include "geometry/crop_drag.h"
#include "image/ui/image_window.h"
#include "image/ui/tools.h"
#include "image/zoom.h"
#include "support/editor_fixture.h"
#include "synthesis/test_card.h"
#include "transform/controls/ui/popup_list.h"
#include "transform/ui/panel.h"

using namespace lv;

class CropPanelTest : public QObject {
    Q_OBJECT

private:
    test::EditorFixture fx_;
    ImageSubWindow* input_ = nullptr;

    TransformPanel* OpenCrop()
    {
        fx_.frame->workspace()->setActiveSubWindow(input_);
        if (!fx_.frame->Dispatch(4002)) return nullptr;
        return TransformPanel::Current();
    }

    // The client point of image pixel (x, y), y counted from the top.
    QPoint ClientOf(int32_t x, int32_t y) const
    {
        const ImageWindow& r = input_->record();
        const QWidget* client = input_->view()->viewport();
        int32_t cx = 0, cy = 0;
        ImageToClient(r, ZoomSubjectOf(r), client->width(), client->height(), input_->Metrics(), x,
                      r.image.height - 1 - y, cx, cy);
        return {cx, cy};
    }

    void Drag(QPoint from, QPoint to)
    {
        ToolMouse(*input_, from.x(), from.y(), kToolDown);
        ToolMouse(*input_, (from.x() + to.x()) / 2, (from.y() + to.y()) / 2, kToolMove);
        ToolMouse(*input_, to.x(), to.y(), kToolMove);
        ToolMouse(*input_, to.x(), to.y(), kToolUp);
    }

    // The read-only values in the panel's order: width, height, then the
    // left, right, top and bottom margins.
    static QStringList Values(TransformPanel* panel)
    {
        QStringList texts;
        for (QLineEdit* field : panel->findChildren<QLineEdit*>())
            if (field->isReadOnly()) texts << field->text();
        return texts;
    }

    static const CropParams& Params(TransformPanel* panel)
    {
        return static_cast<const CropParams&>(*panel->state().params);
    }
    static QList<int32_t> Box(TransformPanel* panel)
    {
        const CropParams& p = Params(panel);
        return {p.x1, p.y1, p.x2, p.y2};
    }
    // The three bytes of a colour pixel.
    static QByteArray Pixel(const Image& image, int32_t x, int32_t y)
    {
        return QByteArray(reinterpret_cast<const char*>(image.rows[y] + 3 * x), 3);
    }
    void ShowCard(int32_t kind)
    {
        Image card;
        QCOMPARE(MakeTestCard(card, kind, 100, 80), 0);
        QCOMPARE(fx_.frame->ShowNewImage(std::move(card), QString()), 0);
        input_ = fx_.frame->ActiveImage();
    }

private slots:
    void initTestCase() { fx_.StartEngine(); }

    void init() { QVERIFY(fx_.OpenFrame()); }

    void cleanup()
    {
        if (TransformPanel* panel = TransformPanel::Current()) delete panel;
        fx_.CloseFrame();
    }

    void aCornerDraggedThenOkCropsTheBox()
    {
        ShowCard(kImageColor);
        TransformPanel* panel = OpenCrop();
        QVERIFY(panel);
        QCOMPARE(CurrentTool(), 8);
        QCOMPARE(Values(panel), QStringList({"100", "80", "0", "0", "0", "0"}));

        // The top left corner, dragged 30 across and 20 down: the texts
        // follow at once, the record at the release.
        const QPoint corner = ClientOf(0, 0);
        ToolMouse(*input_, corner.x(), corner.y(), kToolDown);
        const QPoint to = ClientOf(30, 20);
        ToolMouse(*input_, to.x(), to.y(), kToolMove);
        QCOMPARE(Values(panel), QStringList({"70", "60", "30", "0", "20", "0"}));
        QCOMPARE(Box(panel), QList<int32_t>({0, 0, 99, 79}));
        ToolMouse(*input_, to.x(), to.y(), kToolUp);
        QCOMPARE(Box(panel), QList<int32_t>({30, 20, 99, 79}));
        QCOMPARE(panel->state().outputWidth, 70);
        QCOMPARE(panel->state().outputHeight, 60);
        // A press away from the handles does nothing.
        Drag(ClientOf(10, 70), ClientOf(50, 75));
        QCOMPARE(Params(panel).x1, 30);

        // The left margin's up arrow: one pixel more margin.
        QList<QToolButton*> ups;
        for (QToolButton* b : panel->findChildren<QToolButton*>())
            if (b->objectName() == "up") ups << b;
        QCOMPARE(ups.size(), 4);
        QTest::mouseClick(ups[0], Qt::LeftButton);
        QCOMPARE(Params(panel).x1, 31);
        QCOMPARE(Values(panel), QStringList({"69", "60", "31", "0", "20", "0"}));

        // The preview shows the box, as the result will.
        const Image& in = input_->record().image;
        QTest::mouseClick(panel->button(kButtonPreview), Qt::LeftButton);
        const ImageWindow* preview = panel->state().preview;
        QVERIFY(preview);
        QCOMPARE(preview->zoom, 1);
        QCOMPARE(preview->display.width, 69);
        QCOMPARE(preview->display.height, 60);
        QCOMPARE(Pixel(preview->display, 0, 59), Pixel(in, 31, 59));

        QTest::mouseClick(panel->button(kButtonOk), Qt::LeftButton);
        QTest::qWait(20);
        QCOMPARE(TransformPanel::Current(), nullptr);
        QCOMPARE(CurrentTool(), 0);
        ImageSubWindow* result = nullptr;
        for (ImageSubWindow* w : ImageWindows(fx_.frame->workspace()))
            if (w != input_) result = w;
        QVERIFY(result);
        const Image& out = result->record().image;
        QCOMPARE(out.width, 69);
        QCOMPARE(out.height, 60);
        // Its bottom left pixel is the input's at column 31 of the bottom row.
        QCOMPARE(Pixel(out, 0, 0), Pixel(in, 31, 0));
    }

    void proportionsRefitTheBoxAtOnce()
    {
        ShowCard(kImageGray);
        TransformPanel* panel = OpenCrop();
        QVERIFY(panel);
        // Square: the whole picture's diagonal asks for 90 by 90, which is
        // cut to the 80 rows below the top.
        PopupListControl* proportions = nullptr;
        for (size_t i = 0; i < panel->module().params.size(); ++i)
            if (QByteArray(panel->module().params[i].name) == "proportions")
                proportions = dynamic_cast<PopupListControl*>(panel->paramControl(i));
        QVERIFY(proportions);
        proportions->SetPopup(2);
        QCOMPARE(Values(panel), QStringList({"80", "80", "0", "20", "0", "0"}));
        QCOMPARE(panel->state().outputWidth, 80);
        // The centre's cross moves the square, stopped at the right edge.
        Drag(ClientOf(39, 39), ClientOf(89, 30));
        QCOMPARE(Values(panel), QStringList({"80", "80", "20", "0", "0", "0"}));
        QCOMPARE(Box(panel), QList<int32_t>({20, 0, 99, 79}));

        // Centimetres at the picture's resolution.
        PopupListControl* units = nullptr;
        for (PopupListControl* list : panel->findChildren<PopupListControl*>())
            if (list->count() == 4 && list->entry(3) == "cm") units = list;
        QVERIFY(units);
        units->SetPopup(3);
        auto cm = [this](int32_t pixels) {
            return QString::fromStdString(
                crop_length_text(pixels, 3, input_->record().image.resolution));
        };
        QCOMPARE(Values(panel), QStringList({cm(80), cm(80), cm(20), "0.00", "0.00", "0.00"}));
    }
};

QTEST_MAIN(CropPanelTest)
#include "crop_panel_test.moc"
