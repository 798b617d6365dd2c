// The colour picker and the Color, Compass and tool bar controls on the
// offscreen platform, with a panel stand-in that records what they send.
#include <QLineEdit>
#include <QMainWindow>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMouseEvent>
#include <QPainter>
#include <QPushButton>
#include <QSpinBox>
#include <QtTest>
#include <vector>

#include "image/ui/display_painter.h"
#include "shell/tables.h"
#include "shell/ui/metrics.h"
#include "transform/controls/ui/color_control.h"
#include "transform/controls/ui/color_picker.h"
#include "transform/controls/ui/compass.h"
#include "transform/controls/ui/control_event.h"
#include "transform/controls/ui/tip.h"
#include "transform/controls/ui/toolbar_grid.h"

using namespace lv;

namespace {

struct Sent {
    int32_t message, id;
    int64_t value;
};

// A panel's client area that keeps every control message it gets.
class Recorder : public QWidget {
public:
    std::vector<Sent> sent;
    std::vector<int64_t> Values(int32_t message) const
    {
        std::vector<int64_t> v;
        for (const Sent& s : sent)
            if (s.message == message) v.push_back(s.value);
        return v;
    }

protected:
    bool event(QEvent* event) override
    {
        if (event->type() != ControlEvent::EventType()) return QWidget::event(event);
        auto* e = static_cast<ControlEvent*>(event);
        sent.push_back({e->message, e->controlId, e->value});
        return true;
    }
};

void Mouse(QWidget* w, QEvent::Type type, QPoint p, Qt::MouseButtons held)
{
    QMouseEvent e(type, QPointF(p), w->mapToGlobal(QPointF(p)), Qt::LeftButton, held,
                  Qt::NoModifier);
    QCoreApplication::sendEvent(w, &e);
}

// Presses at the first point, drags through the others and releases.
void Drag(QWidget* w, std::initializer_list<QPoint> points)
{
    const QPoint* p = points.begin();
    Mouse(w, QEvent::MouseButtonPress, *p, Qt::LeftButton);
    for (++p; p != points.end(); ++p) Mouse(w, QEvent::MouseMove, *p, Qt::LeftButton);
    Mouse(w, QEvent::MouseButtonRelease, *(points.end() - 1), Qt::NoButton);
}

void TypeInto(QSpinBox* box, const QString& text)
{
    QLineEdit* edit = box->findChild<QLineEdit*>();
    edit->selectAll();
    QTest::keyClicks(edit, text);
}

QRgb CentrePixel(QWidget* w)
{
    const QImage image = w->grab().toImage();
    return image.pixel(image.width() / 2, image.height() / 2) & 0xFFFFFF;
}

void FlushDeletes() { QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete); }

}  // namespace

class PickerTest : public QObject {
    Q_OBJECT

    QMainWindow frame;
    QMdiArea* workspace = nullptr;
    Recorder* panel = nullptr;

private slots:
    void initTestCase()
    {
        InitEngineTables();
        InitMetrics();
        workspace = new QMdiArea;
        frame.setCentralWidget(workspace);
        frame.resize(1000, 800);
        panel = new Recorder;
        panel->resize(300, 200);
        workspace->addSubWindow(panel)->setGeometry(10, 10, 320, 230);
        frame.show();
        QVERIFY(QTest::qWaitForWindowExposed(&frame));
    }

    void init() { panel->sent.clear(); }

    void pickerTypingDraggingAndCancel()
    {
        QPointer<ColorPicker> picker = OpenColorPicker(workspace, 0, 0, QStringLiteral("Pick"),
                                                       panel, 7, QColor(10, 20, 30), 0, 3);
        QVERIFY(picker);
        QCOMPARE(picker->mdiArea(), workspace);
        QCOMPARE(picker->property("lvWindowKind").toInt(), 9);
        QCOMPARE(picker->windowTitle(), QStringLiteral("Pick"));
        QCOMPARE(workspace->activeSubWindow(), picker.data());
        QCOMPARE(picker->flags(), 3);
        QVERIFY(picker->geometry().left() >= panel->parentWidget()->geometry().right());

        // Typing in R: live messages, the new swatch follows, the old stays.
        auto* red = picker->findChild<QSpinBox*>(QStringLiteral("red"));
        TypeInto(red, QStringLiteral("200"));
        QCOMPARE(panel->Values(kMsgColor),
                 std::vector<int64_t>({0x02141E, 0x14141E, 0xC8141E}));
        QCOMPARE(panel->sent.back().id, 7);
        QCOMPARE(picker->findChild<QSpinBox*>(QStringLiteral("hue"))->value(), 357);
        QCOMPARE(picker->findChild<QSpinBox*>(QStringLiteral("value"))->value(), 78);
        QCOMPARE(CentrePixel(picker->findChild<QWidget*>(QStringLiteral("newColor"))),
                 DisplayQColor(200, 20, 30).rgb() & 0xFFFFFF);
        QCOMPARE(CentrePixel(picker->findChild<QWidget*>(QStringLiteral("oldColor"))),
                 DisplayQColor(10, 20, 30).rgb() & 0xFFFFFF);

        // Typing a percent keeps the hue; SetColorPicker sends nothing.
        panel->sent.clear();
        TypeInto(picker->findChild<QSpinBox*>(QStringLiteral("value")), QStringLiteral("0"));
        QCOMPARE(panel->Values(kMsgColor), std::vector<int64_t>({0}));
        QCOMPARE(picker->findChild<QSpinBox*>(QStringLiteral("hue"))->value(), 357);
        SetColorPicker(picker, QColor(0, 0, 255));
        QCOMPARE(panel->sent.size(), size_t(1));
        QCOMPARE(red->value(), 0);

        // Dragging across the field: a message at each step, hue across and
        // saturation up, the value unchanged.
        panel->sent.clear();
        QWidget* field = picker->findChild<QWidget*>(QStringLiteral("field"));
        QCOMPARE(field->size(), QSize(256, 192));
        Drag(field, {QPoint(0, 191), QPoint(64, 0), QPoint(128, 0), QPoint(900, -50)});
        QCOMPARE(panel->Values(kMsgColor),
                 std::vector<int64_t>({0xFFFFFF, 0x80FF00, 0x00FFFF, 0xFF0006}));
        QVERIFY(qAbs(picker->hsv().hue - 255 * 360.0 / 256) < 1e-9);
        QWidget* bar = picker->findChild<QWidget*>(QStringLiteral("valueBar"));
        Drag(bar, {QPoint(5, 191)});
        QCOMPARE(panel->Values(kMsgColor).back(), 0);

        // Cancel puts the old colour back, then the picker closes.
        panel->sent.clear();
        QTest::mouseClick(picker->findChild<QPushButton*>(QStringLiteral("cancel")),
                          Qt::LeftButton);
        QCOMPARE(panel->sent.size(), size_t(2));
        QCOMPARE(panel->sent[0].message, kMsgColor);
        QCOMPARE(panel->sent[0].value, 0x0A141E);
        QCOMPARE(panel->sent[1].message, kMsgPickerClosed);
        FlushDeletes();
        QVERIFY(!picker);
    }

    void okKeepsTheColour()
    {
        QPointer<ColorPicker> picker = OpenColorPicker(workspace, 100, 40, QStringLiteral("P"),
                                                       panel, 8, QColor(1, 2, 3), 0, 0);
        QCOMPARE(picker->findChild<QWidget*>(QStringLiteral("field"))->size(), QSize(100, 64));
        TypeInto(picker->findChild<QSpinBox*>(QStringLiteral("blue")), QStringLiteral("9"));
        panel->sent.clear();
        QTest::mouseClick(picker->findChild<QPushButton*>(QStringLiteral("ok")), Qt::LeftButton);
        QCOMPARE(panel->sent.size(), size_t(1));
        QCOMPARE(panel->sent[0].message, kMsgPickerClosed);
        QCOMPARE(panel->sent[0].value, 0x010209);
        FlushDeletes();
        QVERIFY(!picker);
        QVERIFY(!OpenColorPicker(nullptr, 0, 0, QString(), panel, 1, Qt::red, 0, 0));
    }

    void colorControlOpensAndPassesOn()
    {
        ColorControl control(panel, 5, 5, QStringLiteral("Color:"), QStringLiteral("Pick a color"),
                             QColor(1, 2, 3), 42);
        control.show();
        const QImage look = control.grab().toImage();
        QCOMPARE(look.pixel(control.swatchRect().center()) & 0xFFFFFF,
                 DisplayQColor(1, 2, 3).rgb() & 0xFFFFFF);
        QTest::mouseClick(&control, Qt::LeftButton, {}, control.swatchRect().center());
        QPointer<ColorPicker> picker = control.picker();
        QVERIFY(picker);
        QCOMPARE(picker->windowTitle(), QStringLiteral("Pick a color"));
        QCOMPARE(picker->color(), QColor(1, 2, 3));

        TypeInto(picker->findChild<QSpinBox*>(QStringLiteral("green")), QStringLiteral("7"));
        QCOMPARE(panel->sent.size(), size_t(1));
        QCOMPARE(panel->sent[0].message, kMsgColor);
        QCOMPARE(panel->sent[0].id, 42);
        QCOMPARE(panel->sent[0].value, 0x010703);
        QCOMPARE(control.color(), QColor(1, 7, 3));

        // A second press brings the same picker forward.
        workspace->setActiveSubWindow(qobject_cast<QMdiSubWindow*>(panel->parentWidget()));
        QTest::mouseClick(&control, Qt::LeftButton, {}, control.swatchRect().center());
        QCOMPARE(control.picker(), picker.data());
        QCOMPARE(workspace->activeSubWindow(), picker.data());

        control.SetColor(QColor(9, 9, 9));
        QCOMPARE(picker->color(), QColor(9, 9, 9));
        QCOMPARE(panel->sent.size(), size_t(1));

        // Closing the picker tells the control only.
        picker->close();
        QVERIFY(!control.picker());
        QCOMPARE(panel->sent.size(), size_t(1));
        FlushDeletes();
        QVERIFY(!picker);
        QTest::mouseClick(&control, Qt::LeftButton, {}, control.swatchRect().center());
        picker = control.picker();
        QVERIFY(picker);
        control.ClosePicker();
        FlushDeletes();
        QVERIFY(!picker);
    }

    void compassDrag()
    {
        CompassControl compass(panel, 0, 0, 101, 81, 0, 5);
        QCOMPARE(compass.centre(), QPoint(50, 40));
        Drag(&compass, {QPoint(50, 70), QPoint(10, 40), QPoint(50, 40), QPoint(50, 1)});
        QCOMPARE(panel->Values(kMsgCompassMoved), std::vector<int64_t>({0, 1024, 3072, 2048}));
        QCOMPARE(panel->Values(kMsgCompassReleased), std::vector<int64_t>({2048}));
        QCOMPARE(panel->sent.back().id, 5);
        panel->sent.clear();
        compass.SetCompass(1024);
        QCOMPARE(compass.value(), 1024);
        compass.SetCompass(4096 + 904);
        QCOMPARE(compass.value(), 904);
        QVERIFY(panel->sent.empty());
    }

    void toolbarKindsAndTips()
    {
        QPixmap picture(16, 16);
        picture.fill(Qt::red);
        const QList<QIcon> icons(6, QIcon(picture));
        const QStringList tips = {QStringLiteral("One"), QStringLiteral("Two")};
        ToolBarControl radio(panel, 10, 10, kToolBarRadio, 16, 3, 2, icons, tips, 9);
        radio.show();
        QCOMPARE(radio.size(), QSize(63, 42));
        auto click = [](ToolBarControl& bar, int32_t i) {
            QTest::mouseClick(&bar, Qt::LeftButton, {}, bar.ButtonRect(i).center());
        };
        auto down = [](const ToolBarControl& bar) {
            std::vector<int32_t> v;
            for (int32_t i = 0; i < bar.count(); ++i)
                if (bar.ButtonPressed(i)) v.push_back(i);
            return v;
        };
        click(radio, 4);
        click(radio, 1);
        QCOMPARE(down(radio), std::vector<int32_t>({1}));
        QCOMPARE(panel->Values(kMsgToolBar), std::vector<int64_t>({4, 1}));
        QCOMPARE(panel->sent.back().id, 9);
        radio.PressButton(-1);
        QVERIFY(down(radio).empty());

        ToolBarControl toggles(panel, 10, 60, kToolBarToggles, 16, 2, 1, icons, tips, 10);
        toggles.show();
        click(toggles, 0);
        click(toggles, 1);
        click(toggles, 0);
        QCOMPARE(down(toggles), std::vector<int32_t>({1}));
        toggles.SetButton(0, true);
        toggles.SetButton(7, true);  // out of range: ignored
        QCOMPARE(down(toggles), std::vector<int32_t>({0, 1}));

        // Hovering shows the tip below the button after a second; a press or
        // leaving hides it.
        Mouse(&radio, QEvent::MouseMove, radio.ButtonRect(1).center(), Qt::NoButton);
        QCOMPARE(radio.hover(), 1);
        QVERIFY(!ShownTip());
        QTRY_VERIFY_WITH_TIMEOUT(ShownTip(), 1500);
        const QRect tip(ShownTip()->mapToGlobal(QPoint(0, 0)), ShownTip()->size());
        QVERIFY(tip.top() > radio.mapToGlobal(radio.ButtonRect(1).bottomLeft()).y());
        QCOMPARE(tip.height(), Metrics().controlHeight);
        click(radio, 1);
        QVERIFY(!ShownTip());
        ShowTip(QPoint(5000, 5000), &radio, QStringLiteral("Two"));
        QVERIFY(frame.rect().contains(ShownTip()->geometry()));
        QEvent leave(QEvent::Leave);
        QCoreApplication::sendEvent(&radio, &leave);
        QVERIFY(!ShownTip());
    }
};

QTEST_MAIN(PickerTest)
#include "picker_test.moc"
