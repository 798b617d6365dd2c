// The editor's front end on the offscreen platform: the progress box, the
// message box, the cursor, window messages and the settings store.
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QPushButton>
#include <QTemporaryDir>
#include <QVBoxLayout>
#include <QtTest>
#include <string>

#include "image/progress.h"
#include "image/window.h"
#include "shell/errors.h"
#include "shell/frontend.h"
#include "shell/preferences.h"
#include "shell/tables.h"
#include "shell/ui/events.h"
#include "shell/ui/message_box.h"
#include "shell/ui/metrics.h"
#include "shell/ui/progress_box.h"
#include "shell/ui/qt_frontend.h"
#include "shell/ui/settings_store.h"

namespace {

// A frame stand-in: a workspace with an ordinary button beside it.
struct Frame {
    QWidget window;
    QMdiArea* workspace = new QMdiArea;
    QPushButton* other = new QPushButton(QStringLiteral("Other"));
    int clicks = 0;

    Frame()
    {
        auto* layout = new QVBoxLayout(&window);
        layout->addWidget(workspace);
        layout->addWidget(other);
        QObject::connect(other, &QPushButton::clicked, [this] { ++clicks; });
        window.resize(640, 480);
        window.show();
        window.activateWindow();
    }
};

// Counts its own timer events.
class TickingWidget : public QWidget {
public:
    int ticks = 0;

protected:
    void timerEvent(QTimerEvent*) override { ++ticks; }
};

// Keeps the last private message it was sent.
class Receiver : public QObject {
public:
    int32_t message = 0;
    lv::WindowHandle about = nullptr;
    int32_t region[4] = {0, 0, 0, 0};

    bool event(QEvent* e) override
    {
        if (e->type() == lv::UserMessageEvent::EventType()) {
            const auto* m = static_cast<lv::UserMessageEvent*>(e);
            message = m->message;
            about = m->about;
            return true;
        }
        if (e->type() == lv::ImageRegionEvent::EventType()) {
            const auto* r = static_cast<lv::ImageRegionEvent*>(e);
            region[0] = r->x0, region[1] = r->y0, region[2] = r->x1, region[3] = r->y1;
            return true;
        }
        return QObject::event(e);
    }
};

// Opens a message box and lets `act` work on it once it is up.
int32_t AnswerBox(int32_t mode, const std::function<void(lv::MessageBoxDialog&)>& act)
{
    QTimer::singleShot(0, [act] {
        for (QWidget* w : QApplication::topLevelWidgets()) {
            if (auto* box = dynamic_cast<lv::MessageBoxDialog*>(w); box && box->isVisible()) {
                act(*box);
                return;
            }
        }
    });
    return lv::ShowMessageBox(nullptr, QStringLiteral("Question"), mode, QStringLiteral("Go on?"));
}

}  // namespace

class FrontEndTest : public QObject {
    Q_OBJECT

private slots:
    void initTestCase()
    {
        lv::InitEngineTables();
        lv::InitMetrics();
    }

    void progressBoxIsAFixedChildOfTheWorkspace()
    {
        Frame frame;
        QVERIFY(QTest::qWaitForWindowExposed(&frame.window));
        lv::QtFrontEnd fe(frame.workspace);
        lv::ScopedFrontEnd installed(fe);
        const lv::UiMetrics& m = lv::Metrics();

        lv::ProgressOpen(0, 9, "Brightness", true);
        lv::ProgressWindow* box = fe.progressWindow();
        QVERIFY(box);
        QCOMPARE(frame.workspace->subWindowList().size(), 1);
        QCOMPARE(frame.workspace->subWindowList().front(), box);
        QCOMPARE(box->windowTitle(), QStringLiteral("Brightness"));
        QVERIFY(box->isVisible());
        QVERIFY(!(box->windowFlags() & Qt::WindowCloseButtonHint));
        QVERIFY(!box->systemMenu());
        QCOMPARE(QApplication::overrideCursor()->shape(), Qt::WaitCursor);

        QVERIFY(box->cancelButton());
        QCOMPARE(box->cancelButton()->text(), QStringLiteral("Cancel"));
        QCOMPARE(box->widget()->size(), QSize(300, m.controlHeight + m.textHeight + 3 * m.margin));
        QCOMPARE(box->x(), (frame.workspace->viewport()->width() - box->width()) / 2);
        QCOMPARE(box->y(), (m.captionHeight + m.controlHeight + 2 * m.margin) / 2 + 8);
        QCOMPARE(box->minimumSize(), box->maximumSize());
        QCOMPARE(box->frameRect().right() + 1, 300 - m.margin);
        QCOMPARE(box->barRect(), box->frameRect().adjusted(2, 2, -2, -2));

        // Refuses to close, and a drag on its title bar does not move it.
        QVERIFY(!box->close());
        const QPoint at = box->pos();
        QTest::mouseMove(box, QPoint(box->width() / 2, 5));
        QTest::mousePress(box, Qt::LeftButton, {}, QPoint(box->width() / 2, 5));
        QTest::mouseMove(box, QPoint(box->width() / 2 + 40, 45));
        QTest::mouseRelease(box, Qt::LeftButton, {}, QPoint(box->width() / 2 + 40, 45));
        QCOMPARE(box->pos(), at);
        QCOMPARE(frame.workspace->subWindowList().size(), 1);

        for (int32_t line = 0; line <= 5; ++line) QCOMPARE(lv::ProgressStep(line), 0);
        // Half done: black up to the bar pixel of step 5, white frame, gray
        // around, the time line under the bar.
        const QImage shot = box->widget()->grab().toImage();
        const QRect bar = box->barRect();
        const int32_t half =
            lv::ProgressBarPixel(*lv::ProgressCurrent(), 5, bar.left(), bar.left() + bar.width());
        QCOMPARE(shot.pixelColor(half - 1, bar.center().y()), QColor(Qt::black));
        QCOMPARE(shot.pixelColor(bar.right() - 3, bar.center().y()), QColor(Qt::white));
        QCOMPARE(shot.pixelColor(box->frameRect().left(), bar.center().y()), QColor(Qt::white));
        QCOMPARE(shot.pixelColor(1, 1), QColor(128, 128, 128));
        QCOMPARE(shot.pixelColor(bar.left() + bar.width() * 9 / 10, bar.top() + 3),
                 QColor(Qt::black));  // the ninth tenth-line

        // Input to anything but the box is dropped during the job.
        QTest::mouseClick(frame.other, Qt::LeftButton);
        QCOMPARE(frame.clicks, 0);
        QVERIFY(!frame.window.close());
        QVERIFY(frame.window.isVisible());

        QTest::mouseClick(box->cancelButton(), Qt::LeftButton);
        QCOMPARE(lv::ProgressStep(6), 11);
        QCOMPARE(lv::ProgressStep(7), 11);
        lv::ProgressClose();
        QVERIFY(!fe.progressWindow());
        QVERIFY(frame.workspace->subWindowList().isEmpty());
        QVERIFY(!QApplication::overrideCursor());

        // With the box gone the rest of the program takes input again.
        QTest::mouseClick(frame.other, Qt::LeftButton);
        QCOMPARE(frame.clicks, 1);
    }

    void spaceOnTheFocusedCancelAborts()
    {
        Frame frame;
        QVERIFY(QTest::qWaitForWindowExposed(&frame.window));
        lv::QtFrontEnd fe(frame.workspace);
        lv::ScopedFrontEnd installed(fe);
        lv::ProgressOpen(0, 3, "Blur", true);
        QCOMPARE(lv::ProgressStep(0), 0);
        QCOMPARE(QApplication::focusWidget(), fe.progressWindow()->cancelButton());
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Space);
        QCOMPARE(lv::ProgressStep(1), 11);
        lv::ProgressClose();
    }

    void boxWithoutCancelStillPumpsAndHoldsTimersOff()
    {
        Frame frame;
        QVERIFY(QTest::qWaitForWindowExposed(&frame.window));
        lv::QtFrontEnd fe(frame.workspace);
        lv::ScopedFrontEnd installed(fe);
        TickingWidget ticking;
        QMdiSubWindow* image = frame.workspace->addSubWindow(new QWidget);
        image->showMaximized();
        lv::ProgressOpen(0, 4, "Resize", false);
        QVERIFY(!fe.progressWindow()->cancelButton());
        // The box keeps its size over a maximised window, which stays so.
        QVERIFY(!fe.progressWindow()->isMaximized());
        QVERIFY(image->isMaximized());
        QCOMPARE(fe.progressWindow()->frameRect().left(), lv::Metrics().margin);

        bool served = false;
        QTimer::singleShot(0, [&served] { served = true; });
        const int timer = ticking.startTimer(0);
        for (int32_t line = 0; line <= 4; ++line) {
            QTest::qWait(2);
            QCOMPARE(lv::ProgressStep(line), 0);
        }
        QVERIFY(served);
        QCOMPARE(ticking.ticks, 0);
        lv::ProgressClose();
        QTRY_VERIFY(ticking.ticks > 0);
        QVERIFY(image->isMaximized());
        ticking.killTimer(timer);
    }

    void messageBoxAnswersButtonsAndKeys()
    {
        const auto click = [](size_t i) {
            return [i](lv::MessageBoxDialog& box) { box.buttons()[i]->click(); };
        };
        const auto key = [](Qt::Key k) {
            return [k](lv::MessageBoxDialog& box) { QTest::keyClick(&box, k); };
        };
        QCOMPARE(AnswerBox(0, click(0)), 1);
        QCOMPARE(AnswerBox(0, key(Qt::Key_Escape)), 1);
        QCOMPARE(AnswerBox(0, key(Qt::Key_Return)), 1);
        QCOMPARE(AnswerBox(1, click(0)), 1);
        QCOMPARE(AnswerBox(1, click(1)), 2);
        QCOMPARE(AnswerBox(1, key(Qt::Key_Escape)), 2);
        QCOMPARE(AnswerBox(1, key(Qt::Key_Enter)), 1);
        QCOMPARE(AnswerBox(3, click(0)), 6);
        QCOMPARE(AnswerBox(3, click(1)), 7);
        QCOMPARE(AnswerBox(3, click(2)), 2);
        QCOMPARE(AnswerBox(3, key(Qt::Key_Escape)), 2);
        QCOMPARE(AnswerBox(3, key(Qt::Key_Return)), 6);
        QCOMPARE(AnswerBox(4, click(0)), 6);
        QCOMPARE(AnswerBox(4, click(1)), 7);
        QCOMPARE(AnswerBox(4, key(Qt::Key_Escape)), 7);
        QCOMPARE(AnswerBox(4, key(Qt::Key_Return)), 6);
        QCOMPARE(AnswerBox(4, key(Qt::Key_N)), 7);
    }

    void messageBoxLaysOutRowsAndButtons()
    {
        const lv::UiMetrics& m = lv::Metrics();
        lv::MessageBoxDialog one(nullptr, QStringLiteral("Warning"), 3, QStringLiteral("A & B"));
        lv::MessageBoxDialog three(nullptr, QStringLiteral("Warning"), 3,
                                   QStringLiteral("Monitor calibration data not found.\nPerform "
                                                  "calibration to eliminate\nthis warning."));
        QCOMPARE(three.height() - one.height(), 2 * m.textHeight);
        QCOMPARE(one.height(), m.textHeight + m.controlHeight + 3 * m.margin);
        QCOMPARE(one.width(), 200 + 2 * m.margin);
        QVERIFY(three.width() > one.width());
        QCOMPARE(three.windowTitle(), QStringLiteral("Warning"));

        const auto& b = three.buttons();
        QCOMPARE(b.size(), size_t{3});
        QCOMPARE(b[0]->text(), QStringLiteral("&Yes"));
        QCOMPARE(b[2]->text(), QStringLiteral("&Cancel"));
        for (const QPushButton* button : b) {
            QCOMPARE(button->size(), b[0]->size());
            QCOMPARE(button->y(), 2 * m.margin + 3 * m.textHeight);
        }
        QCOMPARE(b[1]->x() - (b[0]->x() + b[0]->width()), m.margin);
        const int left = b[0]->x(), right = three.width() - (b[2]->x() + b[2]->width());
        QVERIFY(std::abs(left - right) <= 1);
    }

    void answererHookStandsInForTheBox()
    {
        lv::QtFrontEnd fe(nullptr);
        lv::ScopedFrontEnd installed(fe);
        QString caption, text;
        int32_t mode = -1;
        lv::SetMessageBoxAnswerer([&](const QString& c, int32_t md, const QString& t) {
            caption = c, mode = md, text = t;
            return 7;
        });
        fe.SetCursor(lv::Cursor::Wait);
        QCOMPARE(lv::MessageBoxShow("", 4, std::string(400, 'x')), 7);
        QVERIFY(!QApplication::overrideCursor());  // a box always comes up with the arrow
        QCOMPARE(mode, 4);
        QCOMPARE(text.size(), 340);
        QVERIFY(caption.isEmpty());
        lv::ReportError(11);
        QCOMPARE(caption, QStringLiteral("Attention"));
        QCOMPARE(text, QStringLiteral("Operation Aborted"));
        QCOMPARE(mode, 0);
        lv::SetMessageBoxAnswerer({});
    }

    void waitCursorStaysBalanced()
    {
        lv::QtFrontEnd fe(nullptr);
        fe.SetCursor(lv::Cursor::Wait);
        fe.SetCursor(lv::Cursor::Wait);
        QCOMPARE(QApplication::overrideCursor()->shape(), Qt::WaitCursor);
        fe.SetCursor(lv::Cursor::Arrow);
        QVERIFY(!QApplication::overrideCursor());
        fe.SetCursor(lv::Cursor::Arrow);
        QVERIFY(!QApplication::overrideCursor());
        fe.SetCursor(lv::Cursor::Wait);
        // Destroying the front end gives the arrow back.
    }

    void windowMessagesReachTheirObjects()
    {
        lv::QtFrontEnd fe(nullptr);
        Receiver panel, image;
        fe.SendToWindow(lv::HandleOf(&panel), lv::kMsgImageChanged, lv::HandleOf(&image));
        QCOMPARE(panel.message, 1058);
        QCOMPARE(lv::ObjectOf(panel.about), &image);
        lv::ImageWindow record;
        record.hWindow = lv::HandleOf(&image);
        fe.ImageRegionChanged(record, 1, 2, 30, 40);
        QCOMPARE(image.region[2], 30);
        QCOMPARE(image.region[3], 40);
        fe.SendToWindow(nullptr, lv::kMsgImageChanged, nullptr);  // nobody: nothing happens
    }

    void settingsStoreRoundTrip()
    {
        QTemporaryDir dir;
        QVERIFY(dir.isValid());
        const QString path = dir.filePath(QStringLiteral("lumivue.ini"));
        lv::Preferences prefs;
        prefs.confirmClose = false;
        prefs.workspaceColor = {10, 200, 30};
        prefs.borderWidth = 3;
        prefs.startupDirectory = "/home/ann/My Pictures, 2024";
        prefs.defaultResolution = 300.0;
        prefs.undoLevels = 2;
        prefs.recentCount = 7;
        lv::SessionState state;
        state.recentFiles[0] = "/photos/a b.tif";
        state.recentFiles[6] = "/photos/c.jpg";
        state.printMargins = {0.5, 1.0, 0.25, 0.0};
        state.jpegQuality = {80, 1};
        {
            lv::SettingsStore store(path);
            QCOMPARE(lv::PreferencesSave(store, prefs), 0);
            QCOMPARE(lv::StateSave(store, state), 0);
        }
        lv::SettingsStore store(path);
        QVERIFY(store.HasGroup("Preferences"));
        QVERIFY(store.HasGroup("State"));
        QVERIFY(!store.HasGroup("Nothing"));
        std::string value;
        QVERIFY(store.Get("State", "version", value));
        QCOMPARE(value, std::string("1.0"));
        QVERIFY(!store.Get("State", "missing", value));
        lv::Preferences prefsBack;
        lv::SessionState stateBack;
        lv::PreferencesLoad(store, prefsBack);
        lv::StateLoad(store, prefsBack.recentCount, stateBack);
        QVERIFY(prefsBack == prefs);
        QVERIFY(stateBack == state);
    }
};

QTEST_MAIN(FrontEndTest)
#include "frontend_test.moc"
