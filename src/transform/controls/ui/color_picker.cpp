#include "transform/controls/ui/color_picker.h"

#include <QApplication>
#include <QCloseEvent>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QImage>
#include <QLabel>
#include <QMdiArea>
#include <QMouseEvent>
#include <QPainter>
#include <QPushButton>
#include <QSpinBox>
#include <QVBoxLayout>
#include <algorithm>
#include <cmath>
#include <functional>

#include "image/display.h"
#include "image/pixel.h"
#include "image/ui/display_painter.h"
#include "shell/ui/events.h"
#include "shell/ui/metrics.h"
#include "shell/ui/panel_keys.h"
#include "shell/ui/workspace.h"
#include "transform/controls/ui/control_event.h"

namespace lv {

namespace {

constexpr int32_t kDefaultFieldWidth = 256;
constexpr int32_t kDefaultFieldHeight = 192;
constexpr int32_t kMinimumField = 64;
constexpr int32_t kMaximumField = 1024;
constexpr int32_t kBarStrip = 16;  // width of the value bar's colour strip
constexpr int32_t kBarArrow = 5;   // room for the marker arrows on either side

QRgb ScreenRgb(const RgbColor& c) { return 0xFF000000u | DisplayColor(c.red, c.green, c.blue); }

// Saturation or value from a row: 1 at the top row, 0 at the bottom one.
double UnitFromRow(int32_t y, int32_t height)
{
    if (height <= 1) return 1.0;
    return static_cast<double>(height - 1 - std::clamp(y, 0, height - 1)) / (height - 1);
}

int32_t RowFromUnit(double unit, int32_t height) { return RoundToInt((1.0 - unit) * (height - 1)); }

// A widget that reports the left button's position while it is pressed or
// dragged, clamped to the widget.
class PickArea : public QWidget {
public:
    std::function<void(QPoint)> picked;

protected:
    void mousePressEvent(QMouseEvent* event) override
    {
        if (event->button() != Qt::LeftButton) return;
        dragging_ = true;
        Report(event->position().toPoint());
    }
    void mouseMoveEvent(QMouseEvent* event) override
    {
        if (dragging_) Report(event->position().toPoint());
    }
    void mouseReleaseEvent(QMouseEvent* event) override
    {
        if (event->button() == Qt::LeftButton) dragging_ = false;
    }

private:
    void Report(QPoint p)
    {
        p.setX(std::clamp(p.x(), 0, width() - 1));
        p.setY(std::clamp(p.y(), 0, height() - 1));
        if (picked) picked(p);
    }
    bool dragging_ = false;
};

// Hue across (0 at the left, a full turn at the right edge), saturation up,
// all at full value; a ring marks the picker's hue and saturation.
class HueSaturationField : public PickArea {
public:
    HueSaturationField(const ColorPicker* picker, int32_t width, int32_t height) : picker_(picker)
    {
        setFixedSize(width, height);
        setCursor(Qt::CrossCursor);
    }

    double HueAt(int32_t x) const { return x * 360.0 / width(); }
    double SaturationAt(int32_t y) const { return UnitFromRow(y, height()); }

protected:
    void paintEvent(QPaintEvent*) override
    {
        if (field_.size() != size()) {
            field_ = QImage(size(), QImage::Format_RGB32);
            for (int32_t y = 0; y < height(); ++y) {
                auto* row = reinterpret_cast<QRgb*>(field_.scanLine(y));
                const double s = SaturationAt(y);
                for (int32_t x = 0; x < width(); ++x)
                    row[x] = ScreenRgb(HsvToRgb(HueAt(x), s, 1.0));
            }
        }
        QPainter painter(this);
        painter.drawImage(0, 0, field_);
        const HsvColor& c = picker_->hsv();
        const QPointF at(c.hue * width() / 360.0, RowFromUnit(c.saturation, height()));
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setBrush(Qt::NoBrush);
        painter.setPen(QPen(Qt::black, 1.5));
        painter.drawEllipse(at, 5.0, 5.0);
        painter.setPen(QPen(Qt::white, 1.0));
        painter.drawEllipse(at, 3.5, 3.5);
    }

private:
    const ColorPicker* picker_;
    QImage field_;
};

// Value from black at the bottom to the full colour at the top, with arrows
// on both sides at the picker's value.
class ValueBar : public PickArea {
public:
    ValueBar(const ColorPicker* picker, int32_t height) : picker_(picker)
    {
        setFixedSize(kBarStrip + 2 * kBarArrow, height);
        setCursor(Qt::SizeVerCursor);
    }

    double ValueAt(int32_t y) const { return UnitFromRow(y, height()); }

protected:
    void paintEvent(QPaintEvent*) override
    {
        QPainter painter(this);
        const HsvColor& c = picker_->hsv();
        QImage strip(kBarStrip, height(), QImage::Format_RGB32);
        for (int32_t y = 0; y < height(); ++y) {
            const QRgb rgb = ScreenRgb(HsvToRgb(c.hue, c.saturation, ValueAt(y)));
            auto* row = reinterpret_cast<QRgb*>(strip.scanLine(y));
            std::fill(row, row + kBarStrip, rgb);
        }
        painter.drawImage(kBarArrow, 0, strip);
        const int32_t y = RowFromUnit(c.value, height());
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Qt::NoPen);
        painter.setBrush(Qt::black);
        const int32_t right = width();
        const QPointF left[3] = {QPointF(0, y - 4), QPointF(kBarArrow, y), QPointF(0, y + 4)};
        const QPointF other[3] = {QPointF(right, y - 4), QPointF(right - kBarArrow, y),
                                  QPointF(right, y + 4)};
        painter.drawPolygon(left, 3);
        painter.drawPolygon(other, 3);
    }

private:
    const ColorPicker* picker_;
};

// A colour sample with a black outline; a click calls `clicked`.
class Swatch : public QWidget {
public:
    std::function<QColor()> color;
    std::function<void()> clicked;

    Swatch() { setFixedSize(3 * Metrics().controlHeight, 2 * Metrics().controlHeight); }

protected:
    void paintEvent(QPaintEvent*) override
    {
        QPainter painter(this);
        const QColor c = color ? color() : QColor(Qt::black);
        FillColor(painter, rect().adjusted(1, 1, -1, -1),
                  DisplayQColor(c.red(), c.green(), c.blue()));
        painter.setPen(Qt::black);
        painter.setBrush(Qt::NoBrush);
        painter.drawRect(rect().adjusted(0, 0, -1, -1));
    }
    void mousePressEvent(QMouseEvent* event) override
    {
        if (event->button() == Qt::LeftButton && clicked) clicked();
    }
};

QSpinBox* MakeBox(const char* name, int32_t maximum)
{
    auto* box = new QSpinBox;
    box->setObjectName(QString::fromLatin1(name));
    box->setRange(0, maximum);
    box->setKeyboardTracking(true);  // every keystroke is a change
    box->setAlignment(Qt::AlignRight);
    return box;
}

QLabel* MakeLabel(const QString& text)
{
    auto* label = new QLabel(text);
    label->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    return label;
}

// The panel look: gray 0x808080 with black text, fields and buttons on
// 0xC0C0C0.
QPalette PanelPalette()
{
    QPalette p;
    const QColor gray = DisplayQColor(0x80, 0x80, 0x80);
    const QColor light = DisplayQColor(0xC0, 0xC0, 0xC0);
    p.setColor(QPalette::Window, gray);
    p.setColor(QPalette::WindowText, Qt::black);
    p.setColor(QPalette::Base, light);
    p.setColor(QPalette::Button, light);
    p.setColor(QPalette::Text, Qt::black);
    p.setColor(QPalette::ButtonText, Qt::black);
    return p;
}

// The panel (workspace child) that holds a widget, if any.
QMdiSubWindow* PanelOf(QWidget* widget)
{
    for (QWidget* w = widget; w; w = w->parentWidget())
        if (auto* sub = qobject_cast<QMdiSubWindow*>(w)) return sub;
    return nullptr;
}

}  // namespace

int64_t ColorValue(QColor color)
{
    return PackRgb(RgbColor{color.red(), color.green(), color.blue()});
}

QColor ColorFromValue(int64_t value)
{
    const RgbColor c = UnpackRgb(static_cast<uint32_t>(value & 0xFFFFFF));
    return QColor(c.red, c.green, c.blue);
}

ColorPicker::ColorPicker(int32_t fieldWidth, int32_t fieldHeight, const QString& title,
                         QWidget* owner, int32_t controlId, QColor color, int32_t mode,
                         int32_t flags)
    : owner_(owner), controlId_(controlId), mode_(mode), flags_(flags)
{
    setAttribute(Qt::WA_DeleteOnClose);
    ClearSystemMenuKeys(this);
    setProperty("lvWindowKind", kColorPickerKind);
    setWindowTitle(title);
    setWindowFlags(Qt::SubWindow | Qt::CustomizeWindowHint | Qt::WindowTitleHint |
                   Qt::WindowSystemMenuHint | Qt::WindowCloseButtonHint);
    old_ = QColor(color.red(), color.green(), color.blue());
    rgb_ = RgbColor{old_.red(), old_.green(), old_.blue()};
    hsv_ = RgbToHsv(rgb_.red, rgb_.green, rgb_.blue);

    const UiMetrics& m = Metrics();
    const int32_t w =
        fieldWidth <= 0 ? kDefaultFieldWidth : std::clamp(fieldWidth, kMinimumField, kMaximumField);
    const int32_t h = fieldHeight <= 0 ? kDefaultFieldHeight
                                       : std::clamp(fieldHeight, kMinimumField, kMaximumField);

    auto* body = new QWidget;
    body->setAutoFillBackground(true);
    body->setPalette(PanelPalette());
    body->setFont(m.fontSystem);

    auto* field = new HueSaturationField(this, w, h);
    field->setObjectName(QStringLiteral("field"));
    field->picked = [this, field](QPoint p) {
        ApplyHsv(HsvColor{field->HueAt(p.x()), field->SaturationAt(p.y()), hsv_.value}, nullptr,
                 true);
    };
    field_ = field;
    auto* bar = new ValueBar(this, h);
    bar->setObjectName(QStringLiteral("valueBar"));
    bar->picked = [this, bar](QPoint p) {
        ApplyHsv(HsvColor{hsv_.hue, hsv_.saturation, bar->ValueAt(p.y())}, nullptr, true);
    };
    valueBar_ = bar;

    static const char* const kNames[6] = {"red", "green", "blue", "hue", "saturation", "value"};
    static const char* const kLabels[6] = {"R:", "G:", "B:", "H:", "S:", "V:"};
    auto* boxes = new QGridLayout;
    boxes->setHorizontalSpacing(m.margin);
    boxes->setVerticalSpacing(m.margin);
    for (int32_t i = 0; i < 6; ++i) {
        boxes_[i] = MakeBox(kNames[i], i < 3 ? 255 : (i == 3 ? 359 : 100));
        const int32_t column = i < 3 ? 0 : 2;
        boxes->addWidget(MakeLabel(QString::fromLatin1(kLabels[i])), i % 3, column);
        boxes->addWidget(boxes_[i], i % 3, column + 1);
        QSpinBox* box = boxes_[i];
        QObject::connect(box, &QSpinBox::valueChanged, this, [this, box](int) { BoxChanged(box); });
    }
    boxes_[3]->setSuffix(QString(QChar(0x00B0)));
    boxes_[4]->setSuffix(QStringLiteral("%"));
    boxes_[5]->setSuffix(QStringLiteral("%"));

    auto* oldSwatch = new Swatch;
    oldSwatch->setObjectName(QStringLiteral("oldColor"));
    oldSwatch->color = [this] { return old_; };
    oldSwatch->clicked = [this] {
        ApplyRgb(RgbColor{old_.red(), old_.green(), old_.blue()}, nullptr, true);
    };
    auto* newSwatch = new Swatch;
    newSwatch->setObjectName(QStringLiteral("newColor"));
    newSwatch->color = [this] { return this->color(); };
    newSwatch_ = newSwatch;
    auto* samples = new QGridLayout;
    samples->setHorizontalSpacing(0);
    samples->addWidget(new QLabel(QStringLiteral("Old")), 0, 0, Qt::AlignHCenter);
    samples->addWidget(new QLabel(QStringLiteral("New")), 0, 1, Qt::AlignHCenter);
    samples->addWidget(oldSwatch, 1, 0);
    samples->addWidget(newSwatch, 1, 1);

    ok_ = new QPushButton(QStringLiteral("OK"));
    ok_->setObjectName(QStringLiteral("ok"));
    cancel_ = new QPushButton(QStringLiteral("Cancel"));
    cancel_->setObjectName(QStringLiteral("cancel"));
    QObject::connect(ok_, &QPushButton::clicked, this, [this] { Accept(); });
    QObject::connect(cancel_, &QPushButton::clicked, this, [this] { Cancel(); });
    auto* buttons = new QHBoxLayout;
    buttons->setSpacing(m.margin);
    buttons->addWidget(ok_);
    buttons->addWidget(cancel_);

    auto* right = new QVBoxLayout;
    right->setSpacing(m.margin);
    right->addLayout(boxes);
    right->addSpacing(m.margin);
    right->addLayout(samples);
    right->addStretch(1);
    right->addLayout(buttons);

    auto* main = new QHBoxLayout(body);
    main->setContentsMargins(m.margin, m.margin, m.margin, m.margin);
    main->setSpacing(m.margin);
    main->addWidget(field, 0, Qt::AlignTop);
    main->addWidget(bar, 0, Qt::AlignTop);
    main->addSpacing(m.margin);
    main->addLayout(right);
    main->setSizeConstraint(QLayout::SetFixedSize);
    setWidget(body);

    Refresh(nullptr, 0, false);
}

ColorPicker::~ColorPicker() { NotifyClosed(); }

void ColorPicker::NotifyClosed()
{
    if (closedSent_) return;
    closedSent_ = true;
    SendControlMessage(owner_, kMsgPickerClosed, controlId_, ColorValue(color()));
}

void ColorPicker::SetColor(QColor color)
{
    ApplyRgb(RgbColor{color.red(), color.green(), color.blue()}, nullptr, false);
}

void ColorPicker::Accept() { close(); }

void ColorPicker::Cancel()
{
    ApplyRgb(RgbColor{old_.red(), old_.green(), old_.blue()}, nullptr, true);
    close();
}

void ColorPicker::closeEvent(QCloseEvent* event)
{
    QMdiSubWindow::closeEvent(event);
    if (event->isAccepted()) NotifyClosed();
}

bool ColorPicker::event(QEvent* event)
{
    if (event->type() == UserMessageEvent::EventType()) {
        switch (static_cast<UserMessageEvent*>(event)->message) {
        case kMsgTab: StepFocus(true); break;
        case kMsgBackTab: StepFocus(false); break;
        case kMsgEscape: Cancel(); break;
        case kMsgEnter: Accept(); break;
        default: break;
        }
        return true;
    }
    return QMdiSubWindow::event(event);
}

void ColorPicker::StepFocus(bool forward)
{
    QWidget* order[8] = {boxes_[0], boxes_[1], boxes_[2], boxes_[3],
                         boxes_[4], boxes_[5], ok_,       cancel_};
    int32_t current = -1;
    for (int32_t i = 0; i < 8; ++i)
        if (order[i] == QApplication::focusWidget() ||
            order[i]->isAncestorOf(QApplication::focusWidget()))
            current = i;
    const int32_t next = current < 0 ? 0 : (current + (forward ? 1 : 7)) % 8;
    order[next]->setFocus(forward ? Qt::TabFocusReason : Qt::BacktabFocusReason);
    if (auto* box = qobject_cast<QSpinBox*>(order[next])) box->selectAll();
}

void ColorPicker::BoxChanged(QSpinBox* box)
{
    if (updating_) return;
    if (box == boxes_[0] || box == boxes_[1] || box == boxes_[2]) {
        ApplyRgb(RgbColor{boxes_[0]->value(), boxes_[1]->value(), boxes_[2]->value()}, box, true);
        return;
    }
    HsvColor c = hsv_;
    if (box == boxes_[3]) c.hue = box->value();
    if (box == boxes_[4]) c.saturation = box->value() / 100.0;
    if (box == boxes_[5]) c.value = box->value() / 100.0;
    ApplyHsv(c, box, true);
}

void ColorPicker::ApplyRgb(const RgbColor& rgb, QSpinBox* source, bool notify)
{
    const uint32_t before = PackRgb(rgb_);
    rgb_ = UnpackRgb(PackRgb(rgb));
    HsvColor c = RgbToHsv(rgb_.red, rgb_.green, rgb_.blue);
    // Grays and black have no hue, and black no saturation either: keep the
    // ones the picker had, so that the field's marker stays where it was.
    if (c.saturation == 0.0 || c.value == 0.0) c.hue = hsv_.hue;
    if (c.value == 0.0) c.saturation = hsv_.saturation;
    hsv_ = c;
    Refresh(source, before, notify);
}

void ColorPicker::ApplyHsv(const HsvColor& hsv, QSpinBox* source, bool notify)
{
    const uint32_t before = PackRgb(rgb_);
    rgb_ = HsvToRgb(hsv);
    hsv_.hue = std::isfinite(hsv.hue) ? std::fmod(hsv.hue, 360.0) : 0.0;
    if (hsv_.hue < 0.0) hsv_.hue += 360.0;
    hsv_.saturation = std::clamp(hsv.saturation, 0.0, 1.0);
    hsv_.value = std::clamp(hsv.value, 0.0, 1.0);
    Refresh(source, before, notify);
}

void ColorPicker::Refresh(QSpinBox* source, uint32_t before, bool notify)
{
    const int32_t shown[6] = {rgb_.red,
                              rgb_.green,
                              rgb_.blue,
                              RoundToInt(hsv_.hue) % 360,
                              RoundToInt(hsv_.saturation * 100.0),
                              RoundToInt(hsv_.value * 100.0)};
    updating_ = true;
    for (int32_t i = 0; i < 6; ++i)
        if (boxes_[i] != source) boxes_[i]->setValue(shown[i]);
    updating_ = false;
    field_->update();
    valueBar_->update();
    newSwatch_->update();
    const uint32_t now = PackRgb(rgb_);
    if (notify && now != before) SendControlMessage(owner_, kMsgColor, controlId_, now);
}

ColorPicker* OpenColorPicker(QMdiArea* workspace, int width, int height, const QString& title,
                             QWidget* owner, int32_t controlId, QColor color, int32_t mode,
                             int32_t flags)
{
    if (!workspace) return nullptr;
    auto* picker = new ColorPicker(width, height, title, owner, controlId, color, mode, flags);
    workspace->addSubWindow(picker);
    picker->adjustSize();

    // Beside the owner's panel, on the right when it fits, else on the left,
    // level with the owner; always inside the workspace.
    QWidget* view = workspace->viewport();
    QPoint at(0, 0);
    if (QMdiSubWindow* panel = owner ? PanelOf(owner) : nullptr) {
        const QRect r = panel->geometry();
        const int32_t gap = Metrics().margin;
        at.setX(r.right() + 1 + gap + picker->width() <= view->width()
                    ? r.right() + 1 + gap
                    : r.left() - gap - picker->width());
        at.setY(view->mapFromGlobal(owner->mapToGlobal(QPoint(0, 0))).y());
    } else if (owner) {
        at = view->mapFromGlobal(owner->mapToGlobal(QPoint(owner->width(), 0)));
    }
    at.setX(std::max(0, std::min(at.x(), view->width() - picker->width())));
    at.setY(std::max(0, std::min(at.y(), view->height() - picker->height())));
    picker->move(at);
    picker->show();
    workspace->setActiveSubWindow(picker);
    return picker;
}

void SetColorPicker(ColorPicker* picker, QColor color)
{
    if (picker) picker->SetColor(color);
}

}  // namespace lv
