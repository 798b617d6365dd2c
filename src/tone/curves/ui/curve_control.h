// The Curve control: edits a tone curve with the mouse on a grid over the
// image's histogram, with a small tool row for the view, the curve style,
// the Probe and an Options menu (reset, invert, load and save ".crv" files,
// histogram scale, probe size). It sends 1024 with its identifier to its
// parent after every change of the curve. While its Probe is down, a press
// or drag on an image window marks the level under the pointer on the
// curve's input axis.
#pragma once

#include <QWidget>
#include <cstdint>

#include "tone/curves/curve.h"
#include "tone/histogram.h"

class QButtonGroup;
class QMenu;
class QAction;
class QPainter;
class QToolButton;

namespace lv {

class CurveControl : public QWidget {
public:
    // `histogramMode` 0 none, 1 one channel (`r` only), 2 three channels.
    // The records are not owned and must outlive the control or be replaced.
    CurveControl(int32_t x, int32_t y, int32_t width, int32_t height, QWidget* parent,
                 int32_t controlId, int32_t histogramMode, const HistogramRecord* r,
                 const HistogramRecord* g, const HistogramRecord* b);
    ~CurveControl() override;

    void GetCurveTable(uint8_t table[256]) const;
    const Curve& curve() const { return curve_; }
    // Takes a new list (ignored unless legal), moves the style buttons,
    // rebuilds the table and repaints. Sends nothing.
    void SetCurve(const Curve& curve);
    // New histograms; mode 0 also falls back to the curve view.
    void SetHistograms(int32_t mode, const HistogramRecord* r, const HistogramRecord* g,
                       const HistogramRecord* b);

    // 0 the curve on a grid, 1 input and output histograms (only with
    // histograms).
    int32_t view() const { return view_; }
    void SetView(int32_t view);
    bool linearHistogram() const { return linearHistogram_; }
    int32_t probeSize() const { return probeSize_; }

    // What the probe reads, by the channel codes of `ProbeChannelLevel` (5:
    // red, green and blue together). 0 turns the probe off: it ends, and
    // the Probe button is released and greyed.
    void SetProbeChannel(int32_t channel);
    int32_t probeChannel() const { return probeChannel_; }
    // The level the probe marks, or -1 when it shows nothing; with channel
    // 5, `probeLevels` holds red, green and blue.
    int32_t probeLevel() const { return probeLevel_; }
    const int32_t* probeLevels() const { return probeRgb_; }
    QToolButton* probeButton() const { return probeButton_; }

    // What "Load..." and "Save As..." do once a name is chosen. Loading an
    // illegal file reports 16 and resets the curve; both return the code.
    int32_t LoadCurveFile(const QString& path);
    int32_t SaveCurveFile(const QString& path);

    // The pixel of a level pair in the curve view, for hit tests and tests.
    QPoint LevelToPixel(int32_t levelX, int32_t levelY) const;
    QRect PlotRect() const;

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    bool event(QEvent* event) override;

private:
    enum Drag : int32_t { kNone = 0, kFree = 1, kRailY = 2, kRailX = 3, kHistX = 4, kHistY = 5 };

    void Rebuild();
    void Changed();  // rebuild, repaint, tell the parent
    void PressCurveView(QMouseEvent* event);
    void PressHistogramView(QMouseEvent* event);
    void DragTo(QPoint pos);
    void UpdateCursor(QPoint pos);
    void PaintCurveView(QPainter& painter);
    void PaintHistogramView(QPainter& painter);
    void DrawHistogram(QPainter& painter, const int32_t counts[256], int32_t peak, QRect area,
                       bool xorPen);
    int32_t Scaled(int32_t count) const;
    int32_t PixelToLevelX(int32_t px) const;
    int32_t PixelToLevelY(int32_t py) const;
    // The histogram view's two rails: rows of the x markers and y markers.
    int32_t LowerRail() const;
    int32_t UpperRail() const;
    void LayoutTools();
    void SyncTools();
    void ShowOptions();
    void Load();
    void Save();
    void ReadProbe();
    void PaintProbe(QPainter& painter, int32_t top, int32_t bottom);

    int32_t controlId_;
    Curve curve_;
    uint8_t table_[256] = {};
    CurveHistograms histograms_;
    int32_t view_ = 0;
    int32_t drag_ = kNone;
    int32_t current_ = 0;
    bool moved_ = false;
    bool linearHistogram_ = true;
    int32_t probeSize_ = 1;
    int32_t probeChannel_ = 0;
    int32_t probeLevel_ = -1;
    int32_t probeRgb_[3] = {-1, -1, -1};

    int32_t toolHeight_ = 0;
    QButtonGroup* viewGroup_ = nullptr;
    QButtonGroup* styleGroup_ = nullptr;
    QToolButton* optionsButton_ = nullptr;
    QToolButton* probeButton_ = nullptr;
    QMenu* options_ = nullptr;
    QAction* linearAction_ = nullptr;
    QAction* logAction_ = nullptr;
    QAction* probeActions_[5] = {};
};

}  // namespace lv
