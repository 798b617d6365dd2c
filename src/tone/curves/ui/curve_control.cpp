#include "tone/curves/ui/curve_control.h"

#include <QActionGroup>
#include <QApplication>
#include <QButtonGroup>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QIcon>
#include <QMenu>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <QPixmap>
#include <QPolygon>
#include <QToolButton>
#include <algorithm>
#include <cmath>
#include <cstring>

#include "shell/errors.h"
#include "shell/frontend.h"
#include "shell/ui/metrics.h"
#include "tone/color_space.h"
#include "transform/controls/ui/control_event.h"
#include "transform/controls/ui/probe_tool.h"
#include "shell/messages.h"

namespace lv {

namespace {

constexpr int32_t kMarginTop = 8;
constexpr int32_t kMarginRight = 8;
constexpr int32_t kMarginBottom = 8;
constexpr int32_t kMarginLeftCurve = 16;
constexpr int32_t kMarginLeftHistogram = 8;
constexpr int32_t kMiddleBand = 32;   // between the two histograms of the histogram view
constexpr int32_t kRailReach = 5;     // pixels from a rail marker that still hit it
constexpr int32_t kPointReach2 = 16;  // squared distance from a point that hits it

const QColor kBackground(0x80, 0x80, 0x80);
const QColor kHistogramPen(0x7F, 0x7F, 0x7F);
const QColor kGrid(0xA0, 0xA0, 0xA0);
// Drawn in XOR mode: black on the background, so a second pass erases it.
const QColor kCurvePen(0x80, 0x80, 0x80);

const char* const kCurveFilter = "Curve Files (*.crv)";

// Where the file dialogs start: where the last one left off.
QString& LastCurveDirectory()
{
    static QString directory;
    return directory;
}

// The picture on a view, style or probe button, 20 by 14: 0 the curve, 1
// the histograms, 2 a stair step, 3 a broken line, 4 a smooth curve, 5 the
// probe. The name stays the button's text, and is its tip.
QIcon ToolIcon(int32_t which)
{
    QPixmap pixmap(20, 14);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing, which == 0 || which == 4);
    painter.setPen(QPen(Qt::black, 1.5));
    switch (which) {
    case 0: {
        QPainterPath path(QPointF(2, 12));
        path.cubicTo(QPointF(6, 2), QPointF(12, 2), QPointF(18, 2));
        painter.drawPath(path);
        break;
    }
    case 1:
        painter.setPen(Qt::black);
        for (int32_t i = 0; i < 8; ++i) {
            const int32_t h = (i * 5 + 3) % 9 + 3;
            painter.drawLine(2 + 2 * i, 13, 2 + 2 * i, 13 - h);
        }
        break;
    case 2:
        painter.drawPolyline(QPolygon({QPoint(2, 12), QPoint(8, 12), QPoint(8, 7), QPoint(13, 7),
                                       QPoint(13, 2), QPoint(18, 2)}));
        break;
    case 3:
        painter.drawPolyline(QPolygon({QPoint(2, 12), QPoint(7, 5), QPoint(13, 8), QPoint(18, 2)}));
        break;
    case 4: {
        QPainterPath path(QPointF(2, 12));
        path.cubicTo(QPointF(8, 0), QPointF(12, 14), QPointF(18, 2));
        painter.drawPath(path);
        break;
    }
    default:  // the probe: a pipette tip over a dot
        painter.drawLine(6, 12, 14, 4);
        painter.drawLine(13, 2, 17, 6);
        painter.drawPoint(4, 13);
        break;
    }
    return QIcon(pixmap);
}

void DrawRailMarker(QPainter& painter, QPoint tip, bool pointsRight)
{
    QPolygon triangle;
    if (pointsRight)
        triangle << tip << QPoint(tip.x() - 5, tip.y() - 3) << QPoint(tip.x() - 5, tip.y() + 3);
    else
        triangle << tip << QPoint(tip.x() - 3, tip.y() + 5) << QPoint(tip.x() + 3, tip.y() + 5);
    painter.drawPolygon(triangle);
}

}  // namespace

CurveControl::CurveControl(int32_t x, int32_t y, int32_t width, int32_t height, QWidget* parent,
                           int32_t controlId, int32_t histogramMode, const HistogramRecord* r,
                           const HistogramRecord* g, const HistogramRecord* b)
    : QWidget(parent), controlId_(controlId)
{
    setAttribute(Qt::WA_OpaquePaintEvent);
    setMouseTracking(true);
    toolHeight_ = std::max<int32_t>(Metrics().controlHeight, 18);

    optionsButton_ = new QToolButton(this);
    optionsButton_->setText("Options");
    connect(optionsButton_, &QToolButton::clicked, this, [this] { ShowOptions(); });

    viewGroup_ = new QButtonGroup(this);
    const char* const viewNames[2] = {"Show Curve", "Show Histograms"};
    for (int32_t i = 0; i < 2; ++i) {
        auto* button = new QToolButton(this);
        button->setText(viewNames[i]);
        button->setToolTip(viewNames[i]);
        button->setIcon(ToolIcon(i));
        button->setCheckable(true);
        viewGroup_->addButton(button, i);
    }
    connect(viewGroup_, &QButtonGroup::idClicked, this, [this](int id) { SetView(id); });

    styleGroup_ = new QButtonGroup(this);
    const char* const styleNames[3] = {"Stair Step", "Broken Line", "Smooth Curve"};
    for (int32_t i = 0; i < 3; ++i) {
        auto* button = new QToolButton(this);
        button->setText(styleNames[i]);
        button->setToolTip(styleNames[i]);
        button->setIcon(ToolIcon(2 + i));
        button->setCheckable(true);
        styleGroup_->addButton(button, i);
    }
    connect(styleGroup_, &QButtonGroup::idClicked, this, [this](int id) {
        if (id == curve_.style) return;
        curve_.style = id;
        Changed();
    });

    probeButton_ = new QToolButton(this);
    probeButton_->setText("Probe");
    probeButton_->setToolTip("Probe");
    probeButton_->setIcon(ToolIcon(5));
    probeButton_->setCheckable(true);
    probeButton_->setEnabled(false);
    connect(probeButton_, &QToolButton::toggled, this, [this](bool down) {
        if (down) {
            StartProbe(this);
        } else {
            EndProbe(this);
            probeLevel_ = -1;
            update();
        }
    });

    options_ = new QMenu(this);
    connect(options_->addAction("&Reset"), &QAction::triggered, this, [this] {
        CurveReset(curve_);
        probeSize_ = 1;
        view_ = 0;
        SyncTools();
        Changed();
    });
    connect(options_->addAction("&Invert"), &QAction::triggered, this, [this] {
        CurveInvert(curve_);
        Changed();
    });
    connect(options_->addAction("Load..."), &QAction::triggered, this, [this] { Load(); });
    connect(options_->addAction("Save As..."), &QAction::triggered, this, [this] { Save(); });
    options_->addSeparator();
    auto* scaleGroup = new QActionGroup(options_);
    linearAction_ = options_->addAction("Linear Histogram");
    logAction_ = options_->addAction("Log Histogram");
    for (QAction* action : {linearAction_, logAction_}) {
        action->setCheckable(true);
        scaleGroup->addAction(action);
        connect(action, &QAction::triggered, this, [this, action] {
            linearHistogram_ = action == linearAction_;
            update();
        });
    }
    options_->addSeparator();
    auto* probeGroup = new QActionGroup(options_);
    const char* const probeNames[5] = {"1x1 Probe", "3x3 Probe", "5x5 Probe", "7x7 Probe",
                                       "9x9 Probe"};
    for (int32_t i = 0; i < 5; ++i) {
        probeActions_[i] = options_->addAction(probeNames[i]);
        probeActions_[i]->setCheckable(true);
        probeGroup->addAction(probeActions_[i]);
        connect(probeActions_[i], &QAction::triggered, this, [this, i] { probeSize_ = i; });
    }

    SetHistograms(histogramMode, r, g, b);
    setGeometry(x, y, width, height);
    LayoutTools();
    SyncTools();
}

CurveControl::~CurveControl() { EndProbe(this); }

void CurveControl::SetProbeChannel(int32_t channel)
{
    probeChannel_ = channel;
    probeLevel_ = -1;
    if (channel == 0) probeButton_->setChecked(false);
    probeButton_->setEnabled(channel != 0);
    update();
}

void CurveControl::ReadProbe()
{
    int32_t r = 0, g = 0, b = 0;
    if (!ProbeRead(probeSize_, r, g, b)) return;  // nothing read: the marker stays
    if (probeChannel_ == 5) {
        probeRgb_[0] = r;
        probeRgb_[1] = g;
        probeRgb_[2] = b;
        probeLevel_ = r;
    } else {
        probeLevel_ = ProbeChannelLevel(probeChannel_, r, g, b);
    }
    update();
}

bool CurveControl::event(QEvent* event)
{
    if (event->type() != ControlEvent::EventType()) return QWidget::event(event);
    switch (static_cast<ControlEvent*>(event)->message) {
    case kMsgProbeRead:
    case kMsgProbeMove: ReadProbe(); break;
    case kMsgProbeEnd:
        probeLevel_ = -1;
        update();
        break;
    case kMsgProbeLost:
        // Another probe or tool took over: the button comes up by itself.
        probeButton_->blockSignals(true);
        probeButton_->setChecked(false);
        probeButton_->blockSignals(false);
        probeLevel_ = -1;
        update();
        break;
    default: break;
    }
    return true;
}

// The probe's marker: a line at the level on the input axis, three for red,
// green and blue, in XOR so that the curve under it stays readable.
void CurveControl::PaintProbe(QPainter& painter, int32_t top, int32_t bottom)
{
    if (probeLevel_ < 0) return;
    painter.save();
    painter.setCompositionMode(QPainter::RasterOp_SourceXorDestination);
    const auto line = [&](int32_t level, QColor colour) {
        painter.setPen(colour);
        const int32_t x = LevelToPixel(std::clamp(level, 0, 255), 0).x();
        painter.drawLine(x, top, x, bottom);
    };
    // On the gray background these pens come out red, green and blue.
    if (probeChannel_ == 5) {
        line(probeRgb_[0], QColor(0x00, 0x80, 0x80));
        line(probeRgb_[1], QColor(0x80, 0x00, 0x80));
        line(probeRgb_[2], QColor(0x80, 0x80, 0x00));
    } else {
        line(probeLevel_, QColor(0x00, 0x80, 0x80));
    }
    painter.restore();
}

void CurveControl::GetCurveTable(uint8_t table[256]) const { std::memcpy(table, table_, 256); }

void CurveControl::SetCurve(const Curve& curve)
{
    if (!CurveIsLegal(curve)) return;
    curve_ = curve;
    SyncTools();
    Rebuild();
    update();
}

void CurveControl::SetHistograms(int32_t mode, const HistogramRecord* r, const HistogramRecord* g,
                                 const HistogramRecord* b)
{
    if (mode <= 0) r = nullptr;
    if (mode <= 1) g = b = nullptr;
    CurveSetHistograms(histograms_, r, g, b);
    if (histograms_.mode == 0) view_ = 0;
    SyncTools();
    Rebuild();
    update();
}

void CurveControl::SetView(int32_t view)
{
    view_ = (view == 1 && histograms_.mode != 0) ? 1 : 0;
    drag_ = kNone;
    SyncTools();
    update();
}

int32_t CurveControl::LoadCurveFile(const QString& path)
{
    Curve loaded = curve_;
    const int32_t code = CurveRead(QFile::encodeName(path).toStdString(), loaded);
    if (code == kErrCurveFile) {
        // The curve is lost: go on exactly as "&Reset".
        ReportError(code);
        CurveReset(curve_);
        probeSize_ = 1;
        view_ = 0;
        SyncTools();
        Changed();
        return code;
    }
    if (code != kOk) {
        ReportError(code);
        return code;
    }
    curve_ = loaded;
    SyncTools();
    Changed();
    return kOk;
}

int32_t CurveControl::SaveCurveFile(const QString& path)
{
    const int32_t code = CurveWrite(QFile::encodeName(path).toStdString(), curve_);
    ReportError(code);
    return code;
}

QRect CurveControl::PlotRect() const
{
    const int32_t left = view_ == 0 ? kMarginLeftCurve : kMarginLeftHistogram;
    const int32_t top = toolHeight_ + kMarginTop;
    const int32_t w = std::max(width() - left - kMarginRight, 2);
    const int32_t h = std::max(height() - top - kMarginBottom, 2);
    return QRect(left, top, w, h);
}

QPoint CurveControl::LevelToPixel(int32_t levelX, int32_t levelY) const
{
    const QRect plot = PlotRect();
    const int32_t px =
        plot.left() + static_cast<int32_t>(std::lround(levelX * (plot.width() - 1) / 255.0));
    const int32_t py = plot.top() + static_cast<int32_t>(
                                        std::lround((255 - levelY) * (plot.height() - 1) / 255.0));
    return QPoint(px, py);
}

int32_t CurveControl::PixelToLevelX(int32_t px) const
{
    const QRect plot = PlotRect();
    return static_cast<int32_t>(std::lround((px - plot.left()) * 255.0 / (plot.width() - 1)));
}

int32_t CurveControl::PixelToLevelY(int32_t py) const
{
    const QRect plot = PlotRect();
    return 255 - static_cast<int32_t>(std::lround((py - plot.top()) * 255.0 / (plot.height() - 1)));
}

int32_t CurveControl::UpperRail() const
{
    const QRect plot = PlotRect();
    return plot.top() + std::max((plot.height() - kMiddleBand) / 2, 1);
}

int32_t CurveControl::LowerRail() const { return UpperRail() + kMiddleBand; }

void CurveControl::Rebuild()
{
    build_curve_table(curve_, table_);
    CurvePushHistograms(histograms_, table_);
}

void CurveControl::Changed()
{
    Rebuild();
    update();
    SendControlMessage(parentWidget(), kMsgCurveChanged, controlId_, 0);
}

void CurveControl::LayoutTools()
{
    int32_t x = 0;
    auto place = [&](QAbstractButton* button) {
        button->adjustSize();
        button->setGeometry(x, 0, button->width(), toolHeight_);
        x += button->width();
    };
    place(optionsButton_);
    x += 4;
    for (QAbstractButton* button : viewGroup_->buttons()) place(button);
    x += 4;
    for (QAbstractButton* button : styleGroup_->buttons()) place(button);
    x += 4;
    place(probeButton_);
}

void CurveControl::SyncTools()
{
    if (QAbstractButton* button = styleGroup_->button(curve_.style)) button->setChecked(true);
    viewGroup_->button(1)->setEnabled(histograms_.mode != 0);
    viewGroup_->button(view_)->setChecked(true);
}

void CurveControl::ShowOptions()
{
    (linearHistogram_ ? linearAction_ : logAction_)->setChecked(true);
    probeActions_[std::clamp(probeSize_, 0, 4)]->setChecked(true);
    options_->popup(mapToGlobal(QPoint(width(), 0)));
}

void CurveControl::Load()
{
    const QString name =
        QFileDialog::getOpenFileName(this, "Load Curve", LastCurveDirectory(), kCurveFilter);
    if (name.isEmpty()) return;
    LastCurveDirectory() = QFileInfo(name).absolutePath();
    LoadCurveFile(name);
}

void CurveControl::Save()
{
    for (;;) {
        QString name =
            QFileDialog::getSaveFileName(this, "Save Curve", LastCurveDirectory(), kCurveFilter);
        if (name.isEmpty()) {
            // Cancelling the save dialog reports "Cannot create file" on purpose:
            // every curve-like control behaves this way, and users know it.
            ReportError(kErrCannotCreate);
            return;
        }
        const QString suffix = QFileInfo(name).suffix();
        if (suffix.isEmpty()) {
            name += ".crv";
        } else if (suffix.compare("crv", Qt::CaseInsensitive) != 0) {
            CurrentFrontEnd().MessageBox("Error", kBoxOk,
                                         "Curve files must have an extension of .crv");
            continue;
        }
        LastCurveDirectory() = QFileInfo(name).absolutePath();
        SaveCurveFile(name);
        return;
    }
}

void CurveControl::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    LayoutTools();
    update();
}

// ---- Mouse -------------------------------------------------------------------

void CurveControl::mousePressEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton && event->button() != Qt::RightButton) return;
    if (view_ == 0)
        PressCurveView(event);
    else
        PressHistogramView(event);
}

void CurveControl::PressCurveView(QMouseEvent* event)
{
    const QPoint pos = event->position().toPoint();
    const QRect plot = PlotRect();
    const int32_t levelX = PixelToLevelX(pos.x());
    const int32_t levelY = PixelToLevelY(pos.y());
    const bool left = event->button() == Qt::LeftButton;
    const bool remove = !left || (event->modifiers() & Qt::ControlModifier);
    if (left && (event->modifiers() & Qt::ShiftModifier)) {
        // Shift inserts a point where the pointer is and leaves it there.
        if (CurveInsertPoint(curve_, levelX, levelY) < 0)
            QApplication::beep();
        else
            Changed();
        return;
    }
    for (int32_t i = 0; i < curve_.count; ++i) {
        const QPoint p = LevelToPixel(curve_.x[i], curve_.y[i]);
        if (left && pos.x() < plot.left() && std::abs(pos.y() - p.y()) <= kRailReach) {
            drag_ = kRailY;
            current_ = i;
            return;
        }
        if (left && pos.y() > plot.bottom() && std::abs(pos.x() - p.x()) <= kRailReach &&
            !CurvePointWedged(curve_, i)) {
            drag_ = kRailX;
            current_ = i;
            return;
        }
        const int32_t dx = pos.x() - p.x();
        const int32_t dy = pos.y() - p.y();
        if (dx * dx + dy * dy < kPointReach2) {
            if (remove) {
                drag_ = kNone;
                if (CurveDeletePoint(curve_, i))
                    Changed();
                else
                    QApplication::beep();
            } else {
                drag_ = kFree;
                current_ = i;
            }
            return;
        }
    }
    if (!left) return;
    // Away from every point: a new point, dragged on until the release.
    const int32_t index = CurveInsertPoint(curve_, levelX, levelY);
    if (index < 0) {
        QApplication::beep();
        return;
    }
    current_ = index;
    drag_ = kFree;
    Rebuild();
    update();
}

void CurveControl::PressHistogramView(QMouseEvent* event)
{
    const QPoint pos = event->position().toPoint();
    const int32_t levelX = PixelToLevelX(pos.x());
    const bool left = event->button() == Qt::LeftButton;
    const bool remove = !left || (event->modifiers() & Qt::ControlModifier);
    if (left && (event->modifiers() & Qt::ShiftModifier)) {
        const int32_t middle = (UpperRail() + LowerRail()) / 2;
        if (pos.y() < middle ||
            CurveInsertPoint(curve_, levelX, CurveInsertionY(curve_, levelX)) < 0)
            QApplication::beep();
        else
            Changed();
        return;
    }
    for (int32_t i = 0; i < curve_.count; ++i) {
        const int32_t xPixel = LevelToPixel(curve_.x[i], 0).x();
        const int32_t yPixel = LevelToPixel(curve_.y[i], 0).x();
        const bool onLower = std::abs(pos.y() - LowerRail()) <= kRailReach &&
                             std::abs(pos.x() - xPixel) <= kRailReach;
        const bool onUpper = std::abs(pos.y() - UpperRail()) <= kRailReach &&
                             std::abs(pos.x() - yPixel) <= kRailReach;
        if (!onLower && !onUpper) continue;
        if (remove) {
            drag_ = kNone;
            if (CurveDeletePoint(curve_, i))
                Changed();
            else
                QApplication::beep();
            return;
        }
        if (onLower && CurvePointWedged(curve_, i)) continue;
        drag_ = onLower ? kHistX : kHistY;
        current_ = i;
        return;
    }
}

void CurveControl::DragTo(QPoint pos)
{
    const int32_t levelX = PixelToLevelX(pos.x());
    const int32_t levelY = PixelToLevelY(pos.y());
    const int32_t x = curve_.x[current_];
    const int32_t y = curve_.y[current_];
    switch (drag_) {
    case kFree: CurveMovePoint(curve_, current_, levelX, levelY); break;
    case kRailY: CurveMovePoint(curve_, current_, x, levelY); break;
    case kRailX:
    case kHistX: CurveMovePoint(curve_, current_, levelX, y); break;
    case kHistY: CurveMovePoint(curve_, current_, x, levelX); break;
    default: return;
    }
    Rebuild();
    update();
}

void CurveControl::mouseMoveEvent(QMouseEvent* event)
{
    const QPoint pos = event->position().toPoint();
    if (drag_ != kNone && (event->buttons() & Qt::LeftButton))
        DragTo(pos);
    else
        UpdateCursor(pos);
}

void CurveControl::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton || drag_ == kNone) return;
    DragTo(event->position().toPoint());
    drag_ = kNone;
    // The preview follows at the release, not during the drag.
    SendControlMessage(parentWidget(), kMsgCurveChanged, controlId_, 0);
}

void CurveControl::UpdateCursor(QPoint pos)
{
    const QRect plot = PlotRect();
    Qt::CursorShape shape = Qt::ArrowCursor;
    for (int32_t i = 0; i < curve_.count && shape == Qt::ArrowCursor; ++i) {
        if (view_ == 0) {
            const QPoint p = LevelToPixel(curve_.x[i], curve_.y[i]);
            const int32_t dx = pos.x() - p.x();
            const int32_t dy = pos.y() - p.y();
            if (pos.x() < plot.left() && std::abs(dy) <= kRailReach)
                shape = Qt::SizeVerCursor;
            else if (pos.y() > plot.bottom() && std::abs(dx) <= kRailReach)
                shape = Qt::SizeHorCursor;
            else if (dx * dx + dy * dy < kPointReach2)
                shape = Qt::SizeAllCursor;
        } else {
            const int32_t xPixel = LevelToPixel(curve_.x[i], 0).x();
            const int32_t yPixel = LevelToPixel(curve_.y[i], 0).x();
            if ((std::abs(pos.y() - LowerRail()) <= kRailReach &&
                 std::abs(pos.x() - xPixel) <= kRailReach) ||
                (std::abs(pos.y() - UpperRail()) <= kRailReach &&
                 std::abs(pos.x() - yPixel) <= kRailReach))
                shape = Qt::SizeHorCursor;
        }
    }
    setCursor(shape);
}

// ---- Drawing -----------------------------------------------------------------

int32_t CurveControl::Scaled(int32_t count) const
{
    return linearHistogram_ ? count : log_scale(count);
}

void CurveControl::DrawHistogram(QPainter& painter, const int32_t counts[256], int32_t peak,
                                 QRect area, bool xorPen)
{
    const int32_t top = Scaled(peak);
    if (peak <= 0 || top <= 0) return;
    painter.save();
    if (xorPen) painter.setCompositionMode(QPainter::RasterOp_SourceXorDestination);
    painter.setPen(xorPen ? kHistogramPen : QColor(Qt::black));
    const int32_t bottom = area.bottom();
    for (int32_t i = 0; i < 256; ++i) {
        if (counts[i] <= 0) continue;
        const int32_t px = LevelToPixel(i, 0).x();
        const int64_t h = static_cast<int64_t>(Scaled(counts[i])) * (area.height() - 1) / top;
        painter.drawLine(px, bottom, px, bottom - static_cast<int32_t>(h));
    }
    painter.restore();
}

void CurveControl::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.fillRect(rect(), kBackground);  // the tool strip's free end as well
    if (view_ == 0)
        PaintCurveView(painter);
    else
        PaintHistogramView(painter);
}

void CurveControl::PaintCurveView(QPainter& painter)
{
    const QRect plot = PlotRect();
    if (histograms_.mode != 0)
        DrawHistogram(painter, histograms_.input, histograms_.inputPeak, plot, true);

    painter.setPen(kGrid);
    for (int32_t i = 0; i <= 10; ++i) {
        const QPoint p = LevelToPixel(i * 255 / 10, i * 255 / 10);
        painter.drawLine(p.x(), plot.top(), p.x(), plot.bottom());
        painter.drawLine(plot.left(), p.y(), plot.right(), p.y());
    }
    painter.drawLine(LevelToPixel(0, 0), LevelToPixel(255, 255));
    painter.drawLine(LevelToPixel(0, 255), LevelToPixel(255, 0));

    QPolygon line;
    for (int32_t i = 0; i < 256; ++i) line << LevelToPixel(i, table_[i]);
    painter.save();
    painter.setCompositionMode(QPainter::RasterOp_SourceXorDestination);
    painter.setPen(kCurvePen);
    painter.drawPolyline(line);
    painter.restore();

    PaintProbe(painter, plot.top(), plot.bottom());

    painter.setPen(Qt::black);
    painter.setBrush(Qt::white);
    for (int32_t i = 0; i < curve_.count; ++i) {
        const QPoint p = LevelToPixel(curve_.x[i], curve_.y[i]);
        painter.drawRect(p.x() - 2, p.y() - 2, 4, 4);
        DrawRailMarker(painter, QPoint(plot.left() - 2, p.y()), true);
        DrawRailMarker(painter, QPoint(p.x(), plot.bottom() + 2), false);
    }
}

void CurveControl::PaintHistogramView(QPainter& painter)
{
    const QRect plot = PlotRect();
    const int32_t upper = UpperRail();
    const int32_t lower = LowerRail();
    const QRect output(plot.left(), plot.top(), plot.width(), upper - plot.top());
    const QRect input(plot.left(), lower, plot.width(), plot.bottom() - lower + 1);
    DrawHistogram(painter, histograms_.output, histograms_.outputPeak, output, false);
    DrawHistogram(painter, histograms_.input, histograms_.inputPeak, input, false);
    PaintProbe(painter, lower, plot.bottom());

    // The channel's scale between the two: a gray ramp.
    const int32_t barTop = upper + kMiddleBand / 2 - 4;
    for (int32_t i = 0; i < 256; ++i) {
        painter.setPen(QColor(i, i, i));
        const int32_t px = LevelToPixel(i, 0).x();
        painter.drawLine(px, barTop, px, barTop + 7);
    }

    painter.setBrush(Qt::white);
    for (int32_t i = 0; i < curve_.count; ++i) {
        const int32_t xPixel = LevelToPixel(curve_.x[i], 0).x();
        const int32_t yPixel = LevelToPixel(curve_.y[i], 0).x();
        painter.setPen(Qt::black);
        painter.drawLine(xPixel, lower, yPixel, upper);
        DrawRailMarker(painter, QPoint(xPixel, lower), false);
        QPolygon down;
        down << QPoint(yPixel, upper) << QPoint(yPixel - 3, upper - 5)
             << QPoint(yPixel + 3, upper - 5);
        painter.drawPolygon(down);
    }
}

}  // namespace lv
