// The panels of Mirror/Rotate and Add Border in the editor: the eight tiles
// chosen by a click and by a double click; the border colour's row and a
// black border on a gray picture.
#include <QPushButton>
#include <QtTest>
#include <algorithm>
#include <cstring>

#include "geometry/add_border.h"
#include "geometry/orientation_tiles.h"
#include "image/ui/image_window.h"
#include "shell/commands.h"
#include "support/editor_fixture.h"
#include "synthesis/test_card.h"
#include "transform/controls/ui/color_control.h"
#include "transform/controls/ui/control_event.h"
#include "transform/controls/ui/pedit.h"
#include "transform/ui/panel.h"

using namespace lv;

class GeometryPanelsTest : public QObject {
    Q_OBJECT

private:
    test::EditorFixture fx_;
    ImageSubWindow* input_ = nullptr;

    static QPoint TileCentre(int32_t orientation)
    {
        int32_t left = 0, top = 0;
        orientation_tile_corner(orientation, Metrics().margin, left, top);
        return QPoint(left + kOrientTileSide / 2, top + kOrientTileSide / 2);
    }
    static QWidget* ControlOf(TransformPanel* panel, const char* name)
    {
        const std::vector<ParamDecl>& params = panel->module().params;
        for (size_t i = 0; i < params.size(); ++i)
            if (std::strcmp(params[i].name, name) == 0) return panel->paramControl(i);
        return nullptr;
    }
    const Image* Result() const
    {
        for (ImageSubWindow* w : ImageWindows(fx_.frame->workspace()))
            if (w != input_ && w->record().windowKind == kKindImage) return &w->record().image;
        return nullptr;
    }
    TransformPanel* Open(Image&& image, int32_t command)
    {
        if (fx_.frame->ShowNewImage(std::move(image), QString()) != 0) return nullptr;
        input_ = fx_.frame->ActiveImage();
        return fx_.frame->Dispatch(command) ? TransformPanel::Current() : nullptr;
    }

private slots:
    void initTestCase() { fx_.StartEngine(); }
    void init() { QVERIFY(fx_.OpenFrame()); }
    void cleanup()
    {
        delete TransformPanel::Current();
        fx_.CloseFrame();
    }

    void mirrorRotateTilesClickAndDoubleClick()
    {
        Image card;
        QCOMPARE(MakeTestCard(card, kImageColor, 90, 60), 0);
        TransformPanel* panel = Open(std::move(card), 4001);
        QVERIFY(panel);
        auto* grid = panel->findChild<QWidget*>(QStringLiteral("orientationTiles"));
        QVERIFY(grid);
        const ParamDecl& choice = panel->module().params[0];
        QCOMPARE(ParamInt(choice, *panel->state().params), 0);

        // A press on a frame does nothing; on tile 203 it turns the output.
        QTest::mouseClick(grid, Qt::LeftButton, {}, TileCentre(203) - QPoint(66, 0));
        QCOMPARE(ParamInt(choice, *panel->state().params), 0);
        QTest::mouseClick(grid, Qt::LeftButton, {}, TileCentre(203));
        QCOMPARE(ParamInt(choice, *panel->state().params), 3);
        QCOMPARE(panel->state().outputWidth, 60);
        QCOMPARE(panel->state().outputHeight, 90);
        // The 128 by 85 thumbnail sits 21 rows down on white; red frames
        // the chosen tile, gray the others.
        const QImage shot = grid->grab().toImage();
        const int32_t m = Metrics().margin;
        QCOMPARE(shot.pixel(TileCentre(200) + QPoint(0, -64 + 20)), qRgb(255, 255, 255));
        QCOMPARE(shot.pixel(TileCentre(203) + QPoint(-64 - m / 2 - 1, 0)), qRgb(255, 0, 0));
        QCOMPARE(shot.pixel(TileCentre(200) + QPoint(-64 - m / 2 - 1, 0)), qRgb(128, 128, 128));

        // A double click on 201 makes the clockwise quarter turn and closes:
        // source pixel (x, y) lands at column y, row 89 - x.
        QTest::mouseDClick(grid, Qt::LeftButton, {}, TileCentre(201));
        QTest::qWait(20);
        QCOMPARE(TransformPanel::Current(), nullptr);
        const Image* out = Result();
        QVERIFY(out);
        QCOMPARE(out->width, 60);
        QCOMPARE(out->height, 90);
        const Image& in = input_->record().image;
        for (int32_t c = 0; c < 3; ++c) {
            QCOMPARE(out->rows[89][c], in.rows[0][c]);
            QCOMPARE(out->rows[0][3 * 59 + c], in.rows[59][3 * 89 + c]);
        }
    }

    void addBorderColourRowAndABlackMargin()
    {
        Image gray;
        QCOMPARE(ImageAlloc(gray, kImageGray, 20, 10, 72.0), 0);
        for (int32_t y = 0; y < 10; ++y) std::fill(gray.rows[y], gray.rows[y] + 20, uint8_t{128});
        TransformPanel* panel = Open(std::move(gray), 4022);
        QVERIFY(panel);
        auto& params = static_cast<BorderParams&>(*panel->state().params);
        QCOMPARE(params.red + params.green + params.blue, 3 * 255);
        // The colour's row lies between the buttons and "Left:"; the margins'
        // edits are sized for six digits.
        ColorControl* color = nullptr;
        for (QWidget* child : panel->findChildren<QWidget*>())
            if (!color) color = dynamic_cast<ColorControl*>(child);
        auto* left = dynamic_cast<PEditControl*>(ControlOf(panel, "left"));
        QVERIFY(color && left);
        QVERIFY(color->parentWidget()->y() > panel->button(kButtonOk)->y());
        QVERIFY(color->parentWidget()->y() < left->parentWidget()->y());
        QVERIFY(left->edit()->width() < 200);

        left->edit()->selectAll();
        QTest::keyClicks(left->edit(), "10");
        QTest::mouseClick(color, Qt::LeftButton, {}, color->swatchRect().center());
        QVERIFY(color->picker());
        QCOMPARE(color->picker()->windowTitle(), QStringLiteral("Background Color"));
        SendControlMessage(color, kMsgColor, color->controlId(), 0x000000);  // the picker's black
        QCOMPARE(params.red + params.green + params.blue, 0);
        color->ClosePicker();

        // Black alone would be binary; on a gray picture the result is gray.
        QTest::mouseClick(panel->button(kButtonApply), Qt::LeftButton);
        const Image* out = Result();
        QVERIFY(out);
        QCOMPARE(out->kind, int32_t{kImageGray});
        QCOMPARE(out->width, 30);
        QCOMPARE(out->height, 10);
        for (int32_t y = 0; y < 10; ++y)
            for (int32_t x = 0; x < 30; ++x) QCOMPARE(out->rows[y][x], uint8_t(x < 10 ? 0 : 128));
    }
};

QTEST_MAIN(GeometryPanelsTest)
#include "geometry_panels_test.moc"
