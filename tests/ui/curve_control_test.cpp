// The Curve control on the offscreen platform: editing the curve with the
// mouse, the style buttons and the Options menu, and what the parent hears.
#include <QAction>
#include <QMenu>
#include <QTemporaryDir>
#include <QToolButton>
#include <QtTest>
#include <fstream>

#include "support/scripted_frontend.h"
#include "tone/curves/ui/curve_control.h"
#include "transform/controls/ui/control_event.h"

using namespace lv;

namespace {

// A panel stand-in that counts the control's change messages.
class Recorder : public QWidget {
public:
    int changes = 0;

protected:
    bool event(QEvent* event) override
    {
        if (event->type() != ControlEvent::EventType()) return QWidget::event(event);
        const auto* m = static_cast<ControlEvent*>(event);
        if (m->message == 1024 && m->controlId == 7) ++changes;
        return true;
    }
};

void Mouse(QWidget* w, QEvent::Type type, QPoint pos, Qt::MouseButton button,
           Qt::KeyboardModifiers modifiers = Qt::NoModifier)
{
    const Qt::MouseButtons held = type == QEvent::MouseButtonRelease ? Qt::NoButton : button;
    QMouseEvent event(type, QPointF(pos), w->mapToGlobal(QPointF(pos)), button, held, modifiers);
    QCoreApplication::sendEvent(w, &event);
}

void Click(QWidget* w, QPoint pos, Qt::KeyboardModifiers modifiers)
{
    Mouse(w, QEvent::MouseButtonPress, pos, Qt::LeftButton, modifiers);
    Mouse(w, QEvent::MouseButtonRelease, pos, Qt::LeftButton, modifiers);
}

std::array<uint8_t, 256> Table(const CurveControl& c)
{
    std::array<uint8_t, 256> t{};
    c.GetCurveTable(t.data());
    return t;
}

bool IsIdentity(const CurveControl& c)
{
    const auto t = Table(c);
    for (int i = 0; i < 256; ++i)
        if (t[i] != i) return false;
    return c.curve().count == 2 && c.curve().style == kCurveSpline;
}

void Trigger(CurveControl& c, const QString& text)
{
    for (QAction* a : c.findChildren<QAction*>())
        if (a->text() == text) return a->trigger();
    QFAIL(qPrintable("no action " + text));
}

}  // namespace

class CurveControlTest : public QObject {
    Q_OBJECT
private slots:
    void EditsWithTheMouse()
    {
        Recorder parent;
        auto* c = new CurveControl(0, 0, 300, 330, &parent, 7, 0, nullptr, nullptr, nullptr);
        QVERIFY(IsIdentity(*c));

        // Dragging the middle of the diagonal up adds a point and brightens.
        Mouse(c, QEvent::MouseButtonPress, c->LevelToPixel(128, 128), Qt::LeftButton);
        QCOMPARE(c->curve().count, 3);
        QCOMPARE(parent.changes, 0);  // the parent hears at the release
        Mouse(c, QEvent::MouseMove, c->LevelToPixel(128, 190), Qt::LeftButton);
        Mouse(c, QEvent::MouseButtonRelease, c->LevelToPixel(128, 190), Qt::LeftButton);
        QCOMPARE(parent.changes, 1);
        QVERIFY(Table(*c)[128] > 128);
        QVERIFY(std::abs(c->curve().y[1] - 190) <= 2);

        // A drag keeps the point between its neighbours.
        const QPoint p = c->LevelToPixel(c->curve().x[1], c->curve().y[1]);
        Mouse(c, QEvent::MouseButtonPress, p, Qt::LeftButton);
        Mouse(c, QEvent::MouseButtonRelease, c->LevelToPixel(300, 300), Qt::LeftButton);
        QCOMPARE(c->curve().x[1], 254);
        QCOMPARE(c->curve().y[1], 255);
        QCOMPARE(parent.changes, 2);

        // Ctrl-click deletes it; the two end points are never deleted.
        Click(c, c->LevelToPixel(254, 255), Qt::ControlModifier);
        QCOMPARE(c->curve().count, 2);
        QCOMPARE(parent.changes, 3);
        Click(c, c->LevelToPixel(0, 0), Qt::ControlModifier);
        Mouse(c, QEvent::MouseButtonPress, c->LevelToPixel(255, 255), Qt::RightButton);
        QCOMPARE(c->curve().count, 2);
        QVERIFY(IsIdentity(*c));

        // Shift inserts without a drag: the release sends nothing more.
        Click(c, c->LevelToPixel(64, 128), Qt::ShiftModifier);
        QCOMPARE(c->curve().count, 3);
        QCOMPARE(parent.changes, 4);
    }

    void ToolsAndOptions()
    {
        Recorder parent;
        auto* c = new CurveControl(0, 0, 300, 330, &parent, 7, 0, nullptr, nullptr, nullptr);
        const char* const styles[3] = {"Stair Step", "Broken Line", "Smooth Curve"};
        QToolButton* buttons[3] = {};
        for (QToolButton* b : c->findChildren<QToolButton*>()) {
            for (int i = 0; i < 3; ++i)
                if (b->text() == styles[i]) buttons[i] = b;
            // Every picture button says what it is when the pointer rests.
            if (!b->icon().isNull()) QCOMPARE(b->toolTip(), b->text());
        }
        for (int i = 0; i < 3; ++i) {
            QVERIFY(buttons[i]);
            buttons[i]->click();
            QCOMPARE(c->curve().style, i);
            QVERIFY(buttons[i]->isChecked());
        }
        QCOMPARE(parent.changes, 3);
        buttons[2]->click();  // the style it already has: nothing to tell
        QCOMPARE(parent.changes, 3);

        Curve curve;
        curve.count = 3;
        curve.x[1] = 100, curve.y[1] = 40, curve.x[2] = 255, curve.y[2] = 200;
        curve.style = kCurveLinear;
        c->SetCurve(curve);
        Trigger(*c, "&Invert");
        QCOMPARE(c->curve().x[1], 100);
        QCOMPARE(c->curve().y[0], 255);
        QCOMPARE(c->curve().y[1], 215);
        QCOMPARE(c->curve().y[2], 55);
        QCOMPARE(Table(*c)[0], uint8_t(255));
        QCOMPARE(parent.changes, 4);

        Trigger(*c, "&Reset");
        QVERIFY(IsIdentity(*c));
        QCOMPARE(parent.changes, 5);

        // A file with another version is illegal: reported, and the curve reset.
        test::ScriptedFrontEnd front;
        ScopedFrontEnd scope(front);
        QTemporaryDir dir;
        const QString good = dir.filePath("a.crv"), bad = dir.filePath("b.crv");
        c->SetCurve(curve);
        QCOMPARE(c->SaveCurveFile(good), 0);
        Trigger(*c, "&Reset");
        QCOMPARE(c->LoadCurveFile(good), 0);
        QCOMPARE(c->curve().count, 3);
        QCOMPARE(c->curve().style, int32_t(kCurveLinear));
        std::ofstream(bad.toStdString()) << "Curve 2.0\nnpts 2\nend\n";
        QCOMPARE(c->LoadCurveFile(bad), 16);
        QVERIFY(IsIdentity(*c));
        QCOMPARE(front.boxes.size(), size_t(1));
        QVERIFY(QString::fromStdString(front.boxes[0]).contains("Illegal curve file"));
    }

    void HistogramView()
    {
        HistogramRecord h;
        for (int i = 0; i < 256; ++i) h.counts[i] = i;
        h.peak = 255;
        Recorder parent;
        auto* c = new CurveControl(0, 0, 300, 330, &parent, 7, 0, nullptr, nullptr, nullptr);
        c->SetView(1);
        QCOMPARE(c->view(), 0);  // no histograms, no histogram view
        c->SetHistograms(1, &h, nullptr, nullptr);
        c->SetView(1);
        QCOMPARE(c->view(), 1);
        QVERIFY(!c->grab().isNull());
        Trigger(*c, "Log Histogram");
        QVERIFY(!c->linearHistogram());
        QVERIFY(!c->grab().isNull());
        c->SetHistograms(0, nullptr, nullptr, nullptr);
        QCOMPARE(c->view(), 0);
        QVERIFY(!c->grab().isNull());
    }
};

QTEST_MAIN(CurveControlTest)
#include "curve_control_test.moc"
