// The panel controls on the offscreen platform: what the slider, the integer
// field, the popup list, the image menu and the Amount control send their
// panel, and when.
#include <QLineEdit>
#include <QScrollBar>
#include <QScreen>
#include <QtTest>

#include "image/ui/image_window.h"
#include "shell/tables.h"
#include "shell/ui/events.h"
#include "shell/ui/main_window.h"
#include "shell/ui/message_box.h"
#include "shell/ui/metrics.h"
#include "shell/ui/qt_frontend.h"
#include "shell/ui/workspace.h"
#include "synthesis/test_card.h"
#include "transform/controls/slider_math.h"
#include "transform/controls/ui/amount_control.h"
#include "transform/controls/ui/color_img.h"
#include "transform/controls/ui/control_event.h"
#include "transform/controls/ui/image_menu.h"
#include "transform/controls/ui/integer_field.h"
#include "transform/controls/ui/pedit.h"
#include "transform/controls/ui/popup_list.h"
#include "transform/controls/ui/slider.h"

using namespace lv;

namespace {

// A panel stand-in that records every control message it receives.
class Recorder : public QWidget {
public:
    struct Message {
        int32_t message, id;
        int64_t value;
    };
    QList<Message> messages;

    int Count(int32_t message) const
    {
        int n = 0;
        for (const Message& m : messages) n += m.message == message;
        return n;
    }
    Message Last() const { return messages.isEmpty() ? Message{0, 0, 0} : messages.back(); }

protected:
    bool event(QEvent* event) override
    {
        if (event->type() != ControlEvent::EventType()) return QWidget::event(event);
        const auto* m = static_cast<ControlEvent*>(event);
        messages.push_back({m->message, m->controlId, m->value});
        return true;
    }
};

void FlushDeletes() { QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete); }

}  // namespace

class ControlsTest : public QObject {
    Q_OBJECT

private:
    std::unique_ptr<MainWindow> frame_;
    std::unique_ptr<QtFrontEnd> frontEnd_;
    std::unique_ptr<Recorder> panel_;

    ImageSubWindow* NewCard(int32_t kind, int32_t width, int32_t height)
    {
        Image card;
        if (MakeTestCard(card, kind, width, height) != 0) return nullptr;
        if (frame_->ShowNewImage(std::move(card), QString()) != 0) return nullptr;
        return frame_->ActiveImage();
    }

private slots:
    void initTestCase()
    {
        InitEngineTables();
        PoolInit();
        InitMetrics();
        SetMessageBoxAnswerer([](const QString&, int32_t, const QString&) { return int32_t{1}; });
    }

    void init()
    {
        frame_ = std::make_unique<MainWindow>();
        frontEnd_ = std::make_unique<QtFrontEnd>(frame_->workspace());
        InstallFrontEnd(frontEnd_.get());
        frame_->resize(1000, 800);
        frame_->show();
        QVERIFY(QTest::qWaitForWindowExposed(frame_.get()));
        panel_ = std::make_unique<Recorder>();
        panel_->resize(400, 300);
        panel_->show();
        QVERIFY(QTest::qWaitForWindowExposed(panel_.get()));
    }

    void cleanup()
    {
        panel_.reset();  // its controls let go of their images first
        FlushDeletes();
        frame_->CloseAllWindows();
        InstallFrontEnd(nullptr);
        frontEnd_.reset();
        frame_.reset();
    }

    void sliderDragSendsMovesThenRelease()
    {
        auto* slider = new SliderControl(10, 10, 108, panel_.get(), 5);
        slider->show();
        QTest::mousePress(slider, Qt::LeftButton, {}, QPoint(30, 14));
        QCOMPARE(panel_->Count(kMsgSliderMoved), 1);
        QCOMPARE(panel_->Last().id, 5);
        QCOMPARE(LowHalf(panel_->Last().value), 266);  // 26 * 1024 / 100
        QCOMPARE(HighHalf(panel_->Last().value), -1);
        QTest::mouseMove(slider, QPoint(60, 14));
        QTest::mouseMove(slider, QPoint(60, 3));  // same column: nothing new
        QCOMPARE(panel_->Count(kMsgSliderMoved), 2);
        QTest::mouseRelease(slider, Qt::LeftButton, {}, QPoint(500, 14));  // kept on the track
        QCOMPARE(panel_->Count(kMsgSliderReleased), 1);
        QCOMPARE(LowHalf(panel_->Last().value), 1024);
        QCOMPARE(slider->pixel2(), slider->pixel());  // one marker: both triangles together

        // Two markers: the upper rows take the second.
        panel_->messages.clear();
        slider->SetValues(200, 800);
        QVERIFY(panel_->messages.isEmpty());
        QTest::mouseClick(slider, Qt::LeftButton, {}, QPoint(20, 3));
        QCOMPARE(LowHalf(panel_->Last().value), 200);
        QCOMPARE(HighHalf(panel_->Last().value), SliderValue(108, 20));
        QTest::mouseClick(slider, Qt::LeftButton, {}, QPoint(100, 15));
        QCOMPARE(LowHalf(panel_->Last().value), SliderValue(108, 100));
        QCOMPARE(HighHalf(panel_->Last().value), SliderValue(108, 20));
    }

    void integerTextRule()
    {
        auto* field = new IntegerControl(10, 10, 60, panel_.get(), "Radius:", 50, 0, 100, 9);
        field->show();
        QVERIFY(panel_->messages.isEmpty());
        QLineEdit* edit = field->edit();
        edit->selectAll();
        QTest::keyClicks(edit, "abc");
        QCOMPARE(edit->text(), QString("50"));
        QCOMPARE(field->value(), 50);
        QCOMPARE(panel_->Count(kMsgInteger), 0);

        edit->selectAll();
        QTest::keyClicks(edit, "500");
        QCOMPARE(edit->text(), QString("100"));
        QCOMPARE(field->value(), 100);
        QCOMPARE(panel_->Last().message, int32_t{kMsgInteger});
        QCOMPARE(panel_->Last().id, 9);
        QCOMPARE(panel_->Last().value, 100);

        const int before = panel_->Count(kMsgInteger);
        edit->clear();  // emptied: the value returns, nothing sent
        QCOMPARE(edit->text(), QString("100"));
        field->StepBy(1);
        QCOMPARE(panel_->Count(kMsgInteger), before);
        field->StepBy(-1);
        QCOMPARE(panel_->Last().value, 99);
        field->SetValue(-20);
        QCOMPARE(field->value(), 0);
        QCOMPARE(panel_->Count(kMsgInteger), before + 1);

        QTest::keyClick(edit, Qt::Key_Tab);
        QCOMPARE(panel_->Last().message, int32_t{kMsgTab});
        QCOMPARE(panel_->Last().id, 9);
    }

    void popupListChoices()
    {
        std::vector<std::string> entries;
        for (int i = 0; i < 25; ++i)
            entries.push_back((i == 3 ? "-Entry " : "Entry ") + std::to_string(i));
        auto* list =
            new PopupListControl(10, 10, panel_.get(), 0, PackPopupText("Mode:", entries), 4);
        list->show();
        QVERIFY(panel_->messages.isEmpty());
        QVERIFY(list->IsDisabled(3));
        QCOMPARE(list->entry(3), QString("Entry 3"));

        QTest::mouseClick(list, Qt::LeftButton, {}, list->BoxRect().center());
        PopupDrop* drop = list->drop();
        QVERIFY(drop && drop->isVisible());
        QVERIFY(drop->hasScrollBar());
        QCOMPARE(drop->scrollBar()->maximum(), 1);
        QTest::keyClick(drop, Qt::Key_Down);
        QTest::keyClick(drop, Qt::Key_Down);
        QTest::keyClick(drop, Qt::Key_Down);  // over the disabled entry
        QCOMPARE(drop->highlight(), 4);
        QTest::keyClick(drop, Qt::Key_End);
        QCOMPARE(drop->highlight(), 24);
        QCOMPARE(drop->topLine(), 1);
        QTest::keyClick(drop, Qt::Key_Home);
        QTest::keyClick(drop, Qt::Key_Down);
        QTest::keyClick(drop, Qt::Key_Return);
        FlushDeletes();
        QVERIFY(!list->drop());
        QCOMPARE(list->current(), 1);
        QCOMPARE(panel_->Count(kMsgValueChanged), 1);
        QCOMPARE(panel_->Last().value, 1);

        // The same entry again still tells the panel.
        list->OpenDrop();
        QTest::keyClick(list->drop(), Qt::Key_Space);
        FlushDeletes();
        QCOMPARE(panel_->Count(kMsgValueChanged), 2);

        // A release over a disabled entry chooses nothing; Escape closes.
        list->OpenDrop();
        drop = list->drop();
        QTest::mouseMove(drop, drop->EntryRect(3).center());
        QTest::mouseRelease(drop, Qt::LeftButton, {}, drop->EntryRect(3).center());
        QVERIFY(list->drop());
        QTest::mouseRelease(drop, Qt::LeftButton, {}, drop->EntryRect(5).center());
        FlushDeletes();
        QCOMPARE(list->current(), 5);
        QCOMPARE(panel_->Count(kMsgValueChanged), 3);
        list->OpenDrop();
        QTest::keyClick(list->drop(), Qt::Key_Escape);
        FlushDeletes();
        QVERIFY(!list->drop());
        QCOMPARE(list->current(), 5);
        QCOMPARE(panel_->Count(kMsgValueChanged), 3);

        list->SetPopup(25);
        QCOMPARE(panel_->Count(kMsgValueChanged), 3);
        list->SetPopup(2);
        QCOMPARE(panel_->Count(kMsgValueChanged), 4);

        auto* shortList =
            new PopupListControl(10, 60, panel_.get(), 1, PackPopupText("", {"A", "B"}), 6);
        shortList->OpenDrop();
        QVERIFY(!shortList->drop()->hasScrollBar());
        QTest::keyClick(shortList->drop(), Qt::Key_Escape);
        FlushDeletes();

        // At the foot of the screen the list opens above its box.
        QWidget low;
        auto* lowList = new PopupListControl(0, 0, &low, 0, PackPopupText("", entries), 7);
        const QRect room = low.screen()->availableGeometry();
        low.setGeometry(room.left(), room.bottom() - lowList->height(), 200, lowList->height());
        low.show();
        lowList->OpenDrop();
        QVERIFY(lowList->drop());
        QCOMPARE(lowList->drop()->geometry().bottom(),
                 lowList->mapToGlobal(lowList->BoxRect().topLeft()).y() - 1);
        QTest::keyClick(lowList->drop(), Qt::Key_Escape);
    }

    void imageMenuPressOutside()
    {
        auto* menu = new ImageMenu(panel_.get(), 7, nullptr);
        menu->AddItem(0, nullptr, "Red", Qt::red);
        menu->AddItem(1, nullptr, "Blue", Qt::blue);
        menu->Open(panel_->mapToGlobal(QPoint(10, 10)), 1);
        QCOMPARE(menu->hot(), 1);
        QCOMPARE(menu->height(), 2 * kImageMenuRow + 1);
        // The release of the click that opened it, and one outside: nothing.
        QTest::mouseRelease(menu, Qt::LeftButton, {}, menu->RowRect(0).center());
        QTest::mouseRelease(menu, Qt::LeftButton, {}, QPoint(-20, -20));
        QVERIFY(menu->isVisible());
        QTest::mousePress(menu, Qt::LeftButton, {}, QPoint(menu->width() + 20, 5));
        QVERIFY(!menu->isVisible());
        QCOMPARE(menu->hot(), 1);
        QCOMPARE(panel_->Count(kMsgImageMenuChoice), 0);

        auto* again = new ImageMenu(panel_.get(), 7, nullptr);
        again->AddItem(0, nullptr, "Red", Qt::red);
        again->AddItem(1, nullptr, "Blue", Qt::blue);
        again->Open(panel_->mapToGlobal(QPoint(10, 10)), 1);
        QTest::mouseClick(again, Qt::LeftButton, {}, again->RowRect(0).center());
        QCOMPARE(panel_->Count(kMsgImageMenuChoice), 1);
        QCOMPARE(panel_->Last().id, 7);
        QCOMPARE(panel_->Last().value, 0);
    }

    void amountMaskAndDrag()
    {
        ImageSubWindow* source = NewCard(3, 120, 80);
        QVERIFY(NewCard(2, 60, 40));  // gray, but of another size
        QVERIFY(source);
        auto* amount =
            new AmountControl(10, 10, 300, panel_.get(), 3, source->handle(), frame_->workspace());
        amount->show();
        QCOMPARE(amount->text(), QString("Amount: 100%"));
        const QPoint swatch = amount->SwatchRect().center();
        QTest::mouseClick(amount, Qt::LeftButton, {}, swatch);
        QVERIFY(!amount->menu());

        // One marker: the text follows the drag, the panel hears the release.
        SliderControl* slider = amount->slider();
        QTest::mousePress(slider, Qt::LeftButton, {}, QPoint(slider->pixel(), 14));
        QTest::mouseMove(slider, QPoint(4 + (slider->width() - 8) / 2, 14));
        QCOMPARE(amount->text(), QString("Amount: 50%"));
        QCOMPARE(panel_->Count(kMsgAmountChanged), 0);
        QTest::mouseRelease(slider, Qt::LeftButton, {}, QPoint(4 + (slider->width() - 8) / 2, 14));
        QCOMPARE(panel_->Count(kMsgAmountChanged), 1);
        QCOMPARE(amount->GetAmount().amount,
                 SliderValue(slider->width(), 4 + (slider->width() - 8) / 2));

        ImageSubWindow* mask = NewCard(2, 120, 80);
        QVERIFY(mask);
        QTest::mouseClick(amount, Qt::LeftButton, {}, swatch);
        ImageMenu* menu = amount->menu();
        QVERIFY(menu);
        QCOMPARE(menu->count(), 2);
        QCOMPARE(menu->ItemText(0), QString("No Mask"));
        const int gray = amount->GetAmount().amount * 255 / 1024;  // no rounding term
        QCOMPARE(menu->item(0).color, QColor(gray, gray, gray));
        QCOMPARE(menu->item(1).window, mask->handle());
        QCOMPARE(menu->hot(), 0);
        QTest::mouseClick(menu, Qt::LeftButton, {}, menu->RowRect(1).center());
        QCOMPARE(panel_->Count(kMsgAmountChanged), 2);
        QCOMPARE(panel_->Last().id, 3);
        QCOMPARE(amount->maskIndex(), 1);
        QCOMPARE(amount->GetAmount().amount, 0);
        QCOMPARE(amount->GetAmount().amount2, 1024);
        QCOMPARE(amount->GetAmount().mask, &mask->record().image);
        QCOMPARE(slider->value(), 0);
        QCOMPARE(slider->value2(), 1024);
        QCOMPARE(amount->text(), QString("Amount: 0% .. 100%"));
        QCOMPARE(QString(UserFindLock(mask->handle())), QString("Amount Mask"));

        // The mask's pixels changed: the panel hears it.
        UserMessageEvent changed(kMsgImageChanged, mask->handle());
        QCoreApplication::sendEvent(amount, &changed);
        QCOMPARE(panel_->Count(kMsgAmountChanged), 3);

        // Back to "No Mask": one marker at full strength, the lock let go.
        QTest::mouseClick(amount, Qt::LeftButton, {}, swatch);
        QCOMPARE(amount->menu()->item(0).color, QColor(255, 255, 255));
        QTest::mouseClick(amount->menu(), Qt::LeftButton, {}, amount->menu()->RowRect(0).center());
        QCOMPARE(amount->GetAmount().amount2, -1);
        QCOMPARE(amount->GetAmount().amount, 1024);
        QVERIFY(!UserFindLock(mask->handle()));

        amount->SetAmountMask(mask->handle());
        QCOMPARE(QString(UserFindLock(mask->handle())), QString("Amount Mask"));
        delete amount;
        QVERIFY(!UserFindLock(mask->handle()));
    }

    void colorImgChoices()
    {
        ImageSubWindow* source = NewCard(3, 100, 80);
        ImageSubWindow* gray = NewCard(2, 100, 80);
        QVERIFY(source && gray && NewCard(2, 50, 50));
        QList<QColor> pickerOpenings;
        ColorImgControl::openPickerFunction = [&](ColorImgControl*, QColor c) {
            pickerOpenings.push_back(c);
        };
        auto* control =
            new ColorImgControl(10, 10, panel_.get(), "Texture:", "Texture Color", Qt::red, 11, 0,
                                1 << kImageGray, 100, 80, nullptr, 0, frame_->workspace());
        control->show();
        const QPoint square = control->SquareRect().center();
        QTest::mouseClick(control, Qt::LeftButton, {}, square);
        QVERIFY(control->menu());
        QCOMPARE(control->menu()->count(), 2);
        QCOMPARE(control->menu()->ItemText(0), QString("Select Solid Color"));
        QCOMPARE(control->menu()->item(1).window, gray->handle());
        QTest::mouseClick(control->menu(), Qt::LeftButton, {},
                          control->menu()->RowRect(1).center());
        QCOMPARE(control->imageWindow(), gray->handle());
        QCOMPARE(panel_->Last().message, int32_t{kMsgImagePicker});
        QCOMPARE(panel_->Last().value, 0);
        QCOMPARE(QString(UserFindLock(gray->handle())), QString("Color Image Control"));
        control->PickerColorChanged(Qt::blue);  // an image is chosen: the panel hears nothing
        QCOMPARE(panel_->Count(kMsgImagePicker), 1);

        // Back to the solid colour: the picker opens, the image is let go.
        QTest::mouseClick(control, Qt::LeftButton, {}, square);
        QTest::mouseClick(control->menu(), Qt::LeftButton, {},
                          control->menu()->RowRect(0).center());
        QCOMPARE(pickerOpenings.size(), 1);
        QVERIFY(!control->imageWindow());
        QVERIFY(!UserFindLock(gray->handle()));
        control->PickerColorChanged(QColor(1, 2, 3));
        QCOMPARE(panel_->Last().value, 0x010203);

        // Nothing eligible and no picker: a click does nothing.
        control->SetLimits(-1, 1 << kImageColor, -1, -1, source->handle(), 0);
        QTest::mouseClick(control, Qt::LeftButton, {}, square);
        FlushDeletes();
        QVERIFY(!control->menu());
        QCOMPARE(pickerOpenings.size(), 1);
        ColorImgControl::openPickerFunction = nullptr;

        ColorImgControl* input = CreateInputPicker(panel_.get(), 12, 1 << kImageColor,
                                                   source->handle(), 0, 60, frame_->workspace());
        QCOMPARE(input->imageWindow(), source->handle());
        QVERIFY(UserFindLock(source->handle()));
        delete input;
        QVERIFY(!UserFindLock(source->handle()));
    }
};

QTEST_MAIN(ControlsTest)
#include "controls_test.moc"
