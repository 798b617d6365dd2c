// Mirror/Rotate's part of its panel: the picture in all eight orientations,
// two rows of four tiles made from one thumbnail, and the user clicks the
// one that looks right. A click selects, a double click selects and is OK.
// The panel has Apply, OK and Cancel only, with no preview of its own.
#include <QMouseEvent>
#include <QPainter>
#include <QPushButton>
#include <QVBoxLayout>
#include <functional>

#include "geometry/mirror_rotate.h"
#include "geometry/orientation_tiles.h"
#include "image/display_tables.h"
#include "image/pixel.h"
#include "image/ui/display_painter.h"
#include "image/ui/image_window.h"
#include "shell/preferences.h"
#include "shell/ui/metrics.h"
#include "transform/registry.h"
#include "transform/ui/panel.h"

namespace lv {
namespace {

// The record's `choice`, the orientation's code less 200: the module's one
// parameter.
const ParamDecl& OrientationParam(TransformPanel& panel) { return panel.module().params[0]; }

// Four tiles with their frames and gaps, the panel's margins and its border,
// for frames up to 8 pixels wide.
constexpr int32_t kPanelWidth = 4 * kOrientTileSide + 11 * 8 + 2 * 8 + 16;

// The grid of tiles. It paints what the part holds and hands the clicks
// back to it as orientation codes.
class TileGrid : public QWidget {
public:
    TileGrid(QWidget* parent, const QImage (&pictures)[kOrientTileCount], const int32_t& selected)
        : QWidget(parent), pictures_(pictures), selected_(selected)
    {
        int32_t width = 0, height = 0;
        orientation_grid_size(Metrics().margin, width, height);
        setFixedSize(width, height);
        setObjectName(QStringLiteral("orientationTiles"));
    }

    std::function<void(int32_t orientation)> pressed;
    std::function<void(int32_t orientation)> doubleClicked;

    // Repaints one tile with its frame.
    void UpdateTile(int32_t orientation) { update(FramedRect(orientation)); }

protected:
    void paintEvent(QPaintEvent*) override
    {
        QPainter painter(this);
        const Preferences& p = CurrentPreferences();
        const QColor background =
            DisplayQColor(p.borderColor[0], p.borderColor[1], p.borderColor[2]);
        const int32_t frame = Metrics().margin;
        for (int32_t i = 0; i < kOrientTileCount; ++i) {
            const int32_t orientation = kOrientCopy + i;
            const QRect square = SquareRect(orientation);
            // The frame is the band around the square.
            const QColor pen = orientation == selected_ ? QColor(255, 0, 0) : QColor(128, 128, 128);
            painter.fillRect(square.adjusted(-frame, -frame, frame, frame), pen);
            FillColor(painter, square, background);
            const QImage& picture = pictures_[i];
            if (picture.isNull()) continue;
            int32_t x = 0, y = 0;
            orientation_picture_offset(picture.width(), picture.height(), x, y);
            painter.drawImage(square.left() + x, square.top() + y, picture);
        }
    }

    void mousePressEvent(QMouseEvent* event) override
    {
        if (event->button() != Qt::LeftButton) return;
        const int32_t orientation = At(event->position().toPoint());
        if (orientation && pressed) pressed(orientation);
    }

    void mouseDoubleClickEvent(QMouseEvent* event) override
    {
        if (event->button() != Qt::LeftButton) return;
        const int32_t orientation = At(event->position().toPoint());
        if (orientation && doubleClicked) doubleClicked(orientation);
    }

private:
    static int32_t At(QPoint point)
    {
        return orientation_at(point.x(), point.y(), Metrics().margin);
    }
    static QRect SquareRect(int32_t orientation)
    {
        int32_t left = 0, top = 0;
        orientation_tile_corner(orientation, Metrics().margin, left, top);
        return QRect(left, top, kOrientTileSide, kOrientTileSide);
    }
    static QRect FramedRect(int32_t orientation)
    {
        const int32_t frame = Metrics().margin;
        return SquareRect(orientation).adjusted(-frame, -frame, frame, frame);
    }

    const QImage (&pictures_)[kOrientTileCount];
    const int32_t& selected_;
};

class MirrorRotatePart : public PanelPart {
public:
    void Build(TransformPanel& panel, QVBoxLayout& layout) override
    {
        selected_ = Selected(panel);
        MakePictures(panel);
        grid_ = new TileGrid(nullptr, pictures_, selected_);
        grid_->pressed = [this, &panel](int32_t orientation) { Select(panel, orientation); };
        grid_->doubleClicked = [this, &panel](int32_t orientation) {
            Select(panel, orientation);
            if (QPushButton* ok = panel.button(kButtonOk)) ok->click();
        };
        layout.addWidget(grid_, 0, Qt::AlignHCenter);
    }

    bool Message(TransformPanel&, int32_t, int32_t, int64_t) override { return false; }

    void InputChanged(TransformPanel& panel) override
    {
        MakePictures(panel);
        grid_->update();
    }

private:
    static int32_t Selected(TransformPanel& panel)
    {
        return kOrientCopy + ParamInt(OrientationParam(panel), *panel.state().params);
    }

    // The thumbnail of the input and its seven other orientations; none
    // when memory is short, which leaves the tiles blank.
    void MakePictures(TransformPanel& panel)
    {
        Image small[kOrientTileCount];
        ImageSubWindow* source = panel.sourceWindow();
        if (source) make_orientation_pictures(source->record().image, small);
        for (int32_t i = 0; i < kOrientTileCount; ++i) pictures_[i] = ThumbnailToScreen(small[i]);
    }

    void Select(TransformPanel& panel, int32_t orientation)
    {
        const int32_t before = selected_;
        if (ParamSetInt(OrientationParam(panel), *panel.state().params,
                        orientation - kOrientCopy)) {
            selected_ = orientation;
            panel.ParamsChanged();
        }
        grid_->UpdateTile(before);
        grid_->UpdateTile(selected_);
    }

    QImage pictures_[kOrientTileCount];
    int32_t selected_ = kOrientCopy;
    TileGrid* grid_ = nullptr;
};

const PanelPartRegistration kPart({
    .commandId = 4001,
    .make = NewPanelPart<MirrorRotatePart>,
    .shortBar = true,
    .width = kPanelWidth,
});

}  // namespace
}  // namespace lv
