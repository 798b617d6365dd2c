// The editor's frame on the offscreen platform: start-up, the enable rules
// at dispatch, zoom and its titles, scrolling, closing with the save
// question, the progress box stopping a job, and what a window paints.
#include <QAbstractScrollArea>
#include <QDir>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QMdiArea>
#include <QMimeData>
#include <QPushButton>
#include <QScrollBar>
#include <QTimer>
#include <QWheelEvent>
#include <QtTest>
#include <cstring>

#include "files/formats.h"
#include "files/ui/file_commands.h"
#include "image/display.h"
#include "image/ui/image_window.h"
#include "image/window.h"
#include "shell/commands.h"
#include "shell/errors.h"
#include "shell/preferences.h"
#include "shell/tables.h"
#include "shell/ui/help_window.h"
#include "shell/ui/main_window.h"
#include "shell/ui/message_box.h"
#include "shell/ui/metrics.h"
#include "shell/ui/progress_box.h"
#include "shell/ui/qt_frontend.h"
#include "shell/ui/workspace.h"
#include "support/editor_fixture.h"
#include "support/temp_dir.h"
#include "synthesis/test_card.h"
#include "transform/ui/panel.h"

using namespace lv;

class FrameTest : public QObject {
    Q_OBJECT

private:
    test::EditorFixture fx_;
    std::unique_ptr<MainWindow>& frame_ = fx_.frame;
    std::unique_ptr<QtFrontEnd>& frontEnd_ = fx_.frontEnd;
    QStringList& boxes_ = fx_.boxes;
    QList<int32_t>& answers_ = fx_.answers;
    ImageSubWindow* NewCard(int32_t kind, int32_t width, int32_t height)
    {
        Image card;
        if (MakeTestCard(card, kind, width, height) != 0) return nullptr;
        if (frame_->ShowNewImage(std::move(card), QString()) != 0) return nullptr;
        return frame_->ActiveImage();
    }

private slots:
    void initTestCase() { fx_.StartEngine(); }
    void init() { QVERIFY(fx_.OpenFrame()); }
    void cleanup() { fx_.CloseFrame(); }

    void startsWithTheSplashUntilAClick()
    {
        QCOMPARE(frame_->windowTitle(), QStringLiteral("Lumivue 2.0"));
        frame_->workspace()->ShowSplash();
        QVERIFY(frame_->workspace()->splashShown());
        QTest::mouseClick(frame_->workspace()->viewport(), Qt::LeftButton);
        QVERIFY(!frame_->workspace()->splashShown());
    }

    void greyedCommandsAreRefusedEvenByTheirKeys()
    {
        // No window: Info, Negative and zoom are grey and refused.
        QVERIFY(!frame_->Dispatch(kCmdInfo));
        QVERIFY(!frame_->Dispatch(kCmdNegative));
        QVERIFY(!frame_->Dispatch(kCmdZoomIn));
        // Commands whose modules are not built yet are refused too.
        QVERIFY(!frame_->Dispatch(4050));
        // Ctrl+W reaches dispatch and is refused: no dialog opens.
        bool dialogSeen = false;
        QTimer::singleShot(300, [&] {
            if (QWidget* modal = QApplication::activeModalWidget()) {
                dialogSeen = true;
                modal->close();
            }
        });
        QTest::keyClick(frame_.get(), Qt::Key_W, Qt::ControlModifier);
        QTest::qWait(400);
        QVERIFY(!dialogSeen);
        // The menu greys it as well.
        frame_->UpdateMenus();
        QVERIFY(!frame_->action(kCmdInfo)->isEnabled());
        QVERIFY(frame_->action(kCmdExit)->isEnabled());
    }

    void keysWorkFromAPictureWithTheKeypadOrWithout()
    {
        ImageSubWindow* w = NewCard(kImageColor, 300, 200);
        QVERIFY(w);
        w->widget()->setFocus();
        QWidget* focus = QApplication::focusWidget();
        QVERIFY(focus);
        // The keypad's keys, and the same keys as X11 often delivers them.
        QTest::keyClick(focus, Qt::Key_Minus, Qt::KeypadModifier);
        QCOMPARE(w->record().zoom, -2);
        QTest::keyClick(focus, Qt::Key_Asterisk);
        QCOMPARE(w->record().zoom, 1);
        QTest::keyClick(focus, Qt::Key_Asterisk, Qt::KeypadModifier);
        QCOMPARE(w->record().zoom, 2);
        QTest::keyClick(focus, Qt::Key_Minus);
        QCOMPARE(w->record().zoom, 1);
        // Ctrl and the wheel zoom about the pointer.
        QWheelEvent up(QPointF(10, 10), w->widget()->mapToGlobal(QPointF(10, 10)), QPoint(),
                       QPoint(0, 120), Qt::NoButton, Qt::ControlModifier, Qt::NoScrollPhase, false);
        QApplication::sendEvent(static_cast<QAbstractScrollArea*>(w->widget())->viewport(), &up);
        QCOMPARE(w->record().zoom, 2);
        // Ctrl+W is the frame's Window Info, not the sub-window's Close.
        bool infoSeen = false;
        QTimer::singleShot(300, [&] {
            if (QWidget* modal = QApplication::activeModalWidget()) {
                infoSeen = modal->windowTitle().contains(QStringLiteral("Info"));
                modal->close();
            }
        });
        QTest::keyClick(focus, Qt::Key_W, Qt::ControlModifier);
        QTest::qWait(400);
        QVERIFY(infoSeen);
        QVERIFY(frame_->ActiveImage() == w);
        QCOMPARE(frame_->action(kCmdOpen)->shortcut(), QKeySequence(QStringLiteral("Ctrl+O")));
        QCOMPARE(frame_->action(kCmdSaveAs)->shortcut(),
                 QKeySequence(QStringLiteral("Ctrl+Shift+S")));
    }

    void cascadeLeavesTheTopWindowActive()
    {
        ImageSubWindow* first = NewCard(kImageGray, 60, 40);
        QVERIFY(NewCard(kImageGray, 60, 40));
        QVERIFY(NewCard(kImageGray, 60, 40));
        QVERIFY(frame_->Dispatch(kCmdCascade));
        const QList<QMdiSubWindow*> stack =
            frame_->workspace()->subWindowList(QMdiArea::StackingOrder);
        QCOMPARE(stack.last(), static_cast<QMdiSubWindow*>(first));
        QCOMPARE(frame_->ActiveImage(), first);
    }

    void droppedFilesAndFoldersOpen()
    {
        test::TempDir dir;
        Image card;
        QCOMPARE(MakeTestCard(card, kImageGray, 40, 30), 0);
        for (const char* name : {"a.png", "b.tif"})
            QCOMPARE(WriteImageFile(dir / name, SaveFilterFromName(dir / name), card, {}), 0);
        QFile notes(QString::fromStdString(dir / "notes.txt"));
        QVERIFY(notes.open(QIODevice::WriteOnly));
        notes.write("not a picture");
        notes.close();
        QCOMPARE(WriteImageFile(dir / "one.bmp", SaveFilterFromName(dir / "one.bmp"), card, {}), 0);
        auto drop = [this](const QList<QUrl>& urls) {
            // As a drag does it: entering first, then the drop.
            QMimeData data;
            data.setUrls(urls);
            QDragEnterEvent enter(QPoint(5, 5), Qt::CopyAction, &data, Qt::LeftButton,
                                  Qt::NoModifier);
            QApplication::sendEvent(frame_.get(), &enter);
            QVERIFY(enter.isAccepted());
            QDropEvent event(QPointF(5, 5), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
            QApplication::sendEvent(frame_.get(), &event);
        };
        drop({QUrl::fromLocalFile(QString::fromStdString(dir / "one.bmp"))});
        QVERIFY(frame_->ActiveImage());
        QCOMPARE(QString::fromStdString(frame_->ActiveImage()->record().fileName),
                 QString::fromStdString(dir / "one.bmp"));
        // A name with "." and ".." in it is kept as the plain absolute one.
        QDir().mkpath(QString::fromStdString(dir / "sub"));
        QCOMPARE(FileOpen(frame_.get(), QString::fromStdString(dir / "sub/.././b.tif"), -1), 0);
        QCOMPARE(QString::fromStdString(frame_->ActiveImage()->record().fileName),
                 QString::fromStdString(dir / "b.tif"));
        delete frame_->ActiveImage();
        QDir().rmdir(QString::fromStdString(dir / "sub"));
        // A folder opens the pictures in it, by name, and passes over the rest.
        QFile::remove(QString::fromStdString(dir / "one.bmp"));
        drop({QUrl::fromLocalFile(QString::fromStdString(dir.path.string()))});
        const QList<ImageSubWindow*> opened = ImageWindows(frame_->workspace());
        QCOMPARE(opened.size(), 3);
        // Each new window steps on from the one before, as the frame places them.
        QVERIFY(opened[1]->pos() != opened[2]->pos());
        QVERIFY(opened[0]->pos() != opened[1]->pos());
        QCOMPARE(QString::fromStdString(frame_->ActiveImage()->record().fileName),
                 QString::fromStdString(dir / "b.tif"));
    }

    void helpOpensInItsOwnWindowWithAPageForEachPanel()
    {
        QVERIFY(frame_->Dispatch(kCmdHelpContents));
        HelpWindow* help = HelpWindow::Current();
        QVERIFY(help);
        QCOMPARE(help->browser()->documentTitle(), QStringLiteral("Lumivue Help"));
        help->Search(QStringLiteral("ZOOM scrolling"));
        QVERIFY(help->browser()->toPlainText().contains(QStringLiteral("Image windows")));
        help->Search(QStringLiteral("crispened"));  // words of Resize's declarations
        QVERIFY(help->browser()->toPlainText().contains(QStringLiteral("Resize")));
        // F1 over a panel shows that panel's page.
        QVERIFY(NewCard(kImageColor, 40, 30));
        QVERIFY(frame_->Dispatch(4020));
        QVERIFY(TransformPanel::Current());
        QVERIFY(frame_->Dispatch(kCmdHelpContext));
        QCOMPARE(help->browser()->documentTitle(), QStringLiteral("Blur"));
        QVERIFY(help->browser()->toPlainText().contains(QStringLiteral("lumivue-cli apply blur")));
        if (!qEnvironmentVariable("LUMIVUE_SCREENSHOTS").isEmpty())
            help->grab().save(qEnvironmentVariable("LUMIVUE_SCREENSHOTS") + "/help.png");
        TransformPanel::Current()->close();
        help->close();
    }

    void zoomCommandsShowTheirRatioInTheTitle()
    {
        ImageSubWindow* w = NewCard(kImageColor, 300, 200);
        QVERIFY(w);
        QVERIFY(w->windowTitle().endsWith(QStringLiteral(" (1:1)")));
        QVERIFY(w->windowTitle().startsWith(QStringLiteral("Untitled ")));
        QVERIFY(frame_->Dispatch(kCmdZoomOut));
        QVERIFY(w->windowTitle().endsWith(QStringLiteral(" (1:2)")));
        QCOMPARE(w->record().display.width, 150);
        QVERIFY(frame_->Dispatch(kCmdZoomIn));
        QVERIFY(frame_->Dispatch(kCmdZoomInResize));
        QVERIFY(w->windowTitle().endsWith(QStringLiteral(" (2:1)")));
        QCOMPARE(w->record().zoom, 2);
        QVERIFY(frame_->Dispatch(kCmdZoomActual));
        QCOMPARE(w->record().zoom, 1);
    }

    void copyAndNegativeOpenBesideTheirSource()
    {
        QVERIFY(NewCard(kImageGray, 100, 100));
        ImageSubWindow* source = NewCard(kImageGray, 200, 150);
        QVERIFY(source);
        QVERIFY(frame_->Dispatch(kCmdZoomOut));
        QVERIFY(frame_->Dispatch(kCmdNegative));
        ImageSubWindow* negative = frame_->ActiveImage();
        QVERIFY(negative != source);
        QCOMPARE(negative->pos(),
                 source->pos() + QPoint(Metrics().controlHeight, Metrics().cyChildBorder));
        QCOMPARE(negative->record().zoom, -2);
        QVERIFY(negative->record().modified);
        QCOMPARE(negative->record().image.rows[10][20],
                 static_cast<uint8_t>(255 - source->record().image.rows[10][20]));
        // The job's box came and went without reshuffling the windows: the
        // source is still right under its negative.
        const auto stack = frame_->workspace()->subWindowList(QMdiArea::StackingOrder);
        QCOMPARE(stack.size(), 3);
        QCOMPARE(stack[2], negative);
        QCOMPARE(stack[1], source);
    }

    void histogramOpensAWindowOfTheCounts()
    {
        ImageSubWindow* source = NewCard(kImageGray, 200, 150);
        QVERIFY(source);
        QVERIFY(frame_->Dispatch(kCmdHistogram));
        ImageSubWindow* histogram = frame_->ActiveImage();
        QVERIFY(histogram && histogram != source);
        QCOMPARE(histogram->record().image.kind, int32_t{kImageHistogram});
        QVERIFY(histogram->windowTitle().startsWith(QStringLiteral("Histogram")));
        const auto* words = reinterpret_cast<const int32_t*>(histogram->record().image.rows[0]);
        int64_t sum = 0;
        for (int32_t i = 1; i <= 256; ++i) sum += words[i];
        QCOMPARE(sum, int64_t{200 * 150});
        // Big enough to show each bin, not a speck.
        QVERIFY(histogram->widget()->width() >= 256);
        if (!qEnvironmentVariable("LUMIVUE_SCREENSHOTS").isEmpty()) {
            QTest::qWait(50);
            frame_->grab().save(qEnvironmentVariable("LUMIVUE_SCREENSHOTS") + "/histogram.png");
        }
        // A histogram holds no picture to count: the command's error.
        QVERIFY(frame_->Dispatch(kCmdHistogram));
        QCOMPARE(fx_.boxes.last(), QStringLiteral("Error|Illegal input image type"));
    }

    void scrollingKeepsWholePixelsAndTheDisplayRight()
    {
        ImageSubWindow* w = NewCard(kImageColor, 900, 700);
        QVERIFY(w);
        w->resize(400, 300);
        w->ZoomSet(3, false);
        ImageWindow& r = w->record();
        QVERIFY(r.scrollRangeX > 0 && r.scrollRangeY > 0);
        w->view()->setFocus();
        QTest::keyClick(w->view(), Qt::Key_Right);
        QTest::keyClick(w->view(), Qt::Key_Down);
        QTest::keyClick(w->view(), Qt::Key_PageDown);
        QVERIFY(r.viewLeft > 0);
        QVERIFY(r.viewTop > 0);
        QCOMPARE(r.viewLeft % 3, 0);
        QCOMPARE(r.viewTop % 3, 0);
        QCOMPARE(w->view()->horizontalScrollBar()->value(), r.viewLeft);
        // The shifted display with its new strip equals one built afresh.
        Image scrolled;
        QCOMPARE(ImageDuplicate(r.display, scrolled), 0);
        QCOMPARE(DisplayUpdateAll(r, nullptr), 0);
        for (int32_t y = 0; y < scrolled.height; ++y)
            QVERIFY2(std::memcmp(scrolled.rows[y], r.display.rows[y],
                                 static_cast<size_t>(scrolled.width) * 3) == 0,
                     qPrintable(QStringLiteral("display row %1 differs").arg(y)));
        QTest::keyClick(w->view(), Qt::Key_End, Qt::ControlModifier);
        QCOMPARE(r.viewLeft, r.scrollRangeX - r.scrollRangeX % 3);
    }

    void closingAsksAboutAModifiedPictureAndHonoursLocks()
    {
        ImageSubWindow* w = NewCard(kImageGray, 64, 48);
        QVERIFY(w);
        w->record().modified = true;
        QPointer<ImageSubWindow> alive(w);
        answers_ = {kAnswerCancel};
        w->close();
        QVERIFY(alive);
        QCOMPARE(boxes_.size(), 1);
        QCOMPARE(boxes_[0],
                 QStringLiteral("Warning|Save Modified Image: %1?").arg(w->windowTitle()));

        // A panel that reads the window keeps it open.
        int panel = 0;
        QCOMPARE(UserAdd(&panel, w->handle(), "Brightness", true), 0);
        w->close();
        QVERIFY(alive);
        QCOMPARE(boxes_.last(), QStringLiteral("Error|Window in use by Brightness - Cannot close"));
        UserRemove(&panel, w->handle());

        answers_ = {kAnswerNo};
        w->close();
        QTest::qWait(50);
        QVERIFY(!alive);
    }

    void progressBoxCancelStopsNegativeAndDropsItsWindow()
    {
        ImageSubWindow* w = NewCard(kImageColor, 1500, 1200);
        QVERIFY(w);
        const int before = frame_->workspace()->subWindowList().size();
        qputenv("LUMIVUE_SLOW_JOBS", "2");
        bool boxSeen = false;
        QTimer::singleShot(200, [&] {
            ProgressWindow* box = frontEnd_->progressWindow();
            if (!box) return;
            boxSeen = box->mdiArea() == frame_->workspace() &&
                      box->windowTitle() == QStringLiteral("Negative");
            QTest::mouseClick(box->cancelButton(), Qt::LeftButton);
        });
        QVERIFY(frame_->Dispatch(kCmdNegative));
        qunsetenv("LUMIVUE_SLOW_JOBS");
        QVERIFY(boxSeen);
        QCOMPARE(boxes_.last(), QStringLiteral("Attention|Operation Aborted"));
        QTest::qWait(50);
        QCOMPARE(frame_->workspace()->subWindowList().size(), before);
        QVERIFY(!frontEnd_->progressWindow());
    }

    void paintsTheDisplayColoursInBothModes()
    {
        ImageSubWindow* w = NewCard(kImageColor, 120, 90);
        QVERIFY(w);
        QTest::qWait(20);
        const ImageWindow& r = w->record();
        QImage shot = w->view()->viewport()->grab().toImage();
        // Row 0 of the display is the bottom of the picture on screen.
        for (const QPoint p : {QPoint(5, 5), QPoint(60, 30), QPoint(100, 80)}) {
            const uint8_t* px = r.display.rows[r.display.height - 1 - p.y()] + p.x() * 3;
            QCOMPARE(shot.pixelColor(r.originX + p.x(), r.originY + p.y()),
                     QColor(px[2], px[1], px[0]));
        }

        // Palette mode: every painted pixel is one of the 236 palette colours
        // and the dither follows the rule for its row and column.
        SetDisplayMode(kDisplayPalette);
        w->view()->viewport()->repaint();
        shot = w->view()->viewport()->grab().toImage();
        const std::vector<uint32_t>& palette = ScreenPalette();
        for (const QPoint p : {QPoint(3, 7), QPoint(61, 30), QPoint(110, 85)}) {
            const int32_t row = r.display.height - 1 - p.y();
            std::vector<uint8_t> indices(static_cast<size_t>(r.display.width));
            DitherColorRow(r.display.rows[row], r.display.width, row, indices.data());
            const uint32_t c = palette[indices[static_cast<size_t>(p.x())]];
            QCOMPARE(shot.pixelColor(r.originX + p.x(), r.originY + p.y()),
                     QColor((c >> 16) & 255, (c >> 8) & 255, c & 255));
        }
    }
};

QTEST_MAIN(FrameTest)
#include "frame_test.moc"
