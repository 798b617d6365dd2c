#include "image/ui/display_painter.h"

#include <QImage>
#include <QPainter>
#include <QVector>
#include <algorithm>
#include <vector>

#include "image/display.h"
#include "image/pixel.h"
#include "image/display_tables.h"
#include "shell/preferences.h"

namespace lv {

namespace {

QVector<QRgb> PaletteTable()
{
    QVector<QRgb> table;
    for (uint32_t c : ScreenPalette())
        table.push_back(qRgb((c >> 16) & 255, (c >> 8) & 255, c & 255));
    return table;
}

QVector<QRgb> GrayTable()
{
    const DisplayTables& t = CurrentDisplayTables();
    QVector<QRgb> table(256);
    for (int i = 0; i < 256; ++i) table[i] = qRgb(t.red[i], t.green[i], t.blue[i]);
    return table;
}

// The rows r..r+n-1 of a display copy as an image with the top row first, as
// the screen wants it. Rows of one block are contiguous, so a band is one
// image over the block's memory, mirrored into screen order.
QImage Band(const Image& display, int32_t r, int32_t n, bool palette)
{
    const int32_t w = display.width;
    if (palette && (display.kind == kImageGray || display.kind == kImageColor)) {
        QImage out(w, n, QImage::Format_Indexed8);
        out.setColorTable(PaletteTable());
        for (int32_t i = 0; i < n; ++i) {
            uint8_t* dest = out.scanLine(n - 1 - i);
            if (display.kind == kImageGray)
                DitherGrayRow(display.rows[r + i], w, r + i, dest);
            else
                DitherColorRow(display.rows[r + i], w, r + i, dest);
        }
        return out;
    }
    const uchar* bits = display.rows[r];
    QImage band;
    switch (display.kind) {
    case kImageBinary: {
        band = QImage(bits, w, n, display.stride, QImage::Format_Mono);
        const DisplayTables& t = CurrentDisplayTables();
        band.setColorTable({qRgb(0, 0, 0), qRgb(t.red[255], t.green[255], t.blue[255])});
        break;
    }
    case kImageGray:
        band = QImage(bits, w, n, display.stride, QImage::Format_Indexed8);
        band.setColorTable(GrayTable());
        break;
    default: band = QImage(bits, w, n, display.stride, QImage::Format_BGR888); break;
    }
    return band.mirrored(false, true);
}

void PaintPicture(QPainter& painter, ImageWindow& record, int32_t clientWidth, int32_t clientHeight,
                  const QRect& clip)
{
    const Image& d = record.display;
    const int32_t ox = record.originX, oy = record.originY;
    if (ox || oy) {
        // The border round a small picture, overlapping it by one pixel.
        const Preferences& p = CurrentPreferences();
        const QColor border = DisplayQColor(p.borderColor[0], p.borderColor[1], p.borderColor[2]);
        const int32_t w = d.width, h = d.height;
        FillColor(painter, QRect(0, 0, clientWidth, oy + 1), border);
        FillColor(painter, QRect(ox + w - 1, 0, clientWidth - (ox + w - 1), clientHeight), border);
        FillColor(painter, QRect(0, oy + h - 1, clientWidth, clientHeight - (oy + h - 1)), border);
        FillColor(painter, QRect(0, 0, ox + 1, clientHeight), border);
    }
    if (!d.rows || d.rowsPerBlock <= 0) return;
    const QRect picture(ox, oy, d.width, d.height);
    if (!picture.intersects(clip)) return;
    const bool palette = CurrentDisplayMode() == kDisplayPalette;
    for (int32_t r = 0; r < d.height; r += d.rowsPerBlock) {
        const int32_t n = std::min(d.rowsPerBlock, d.height - r);
        const int32_t top = d.height - r - n;  // the band holding row 0 is at the bottom
        if (!QRect(ox, oy + top, d.width, n).intersects(clip)) continue;
        painter.drawImage(ox, oy + top, Band(d, r, n, palette));
    }

    // The grid: lines through the image points width * i / g, height * i / g.
    const int32_t g = record.gridDivisions;
    const Image& image = record.image;
    if (g <= 1 || image.width <= 0 || image.height <= 0) return;
    painter.setPen(Qt::black);
    for (int32_t i = 1; i < g; ++i) {
        const int64_t x = int64_t{image.width} * i / g;
        const int64_t ty = image.height - 1 - int64_t{image.height} * i / g;
        const int64_t cx = record.zoom >= 1 ? ox + (x - record.sourceLeft) * record.zoom
                                            : ox + (x - record.sourceLeft) / -record.zoom;
        const int64_t cy = record.zoom >= 1 ? oy + (ty - record.sourceTop) * record.zoom
                                            : oy + (ty - record.sourceTop) / -record.zoom;
        if (cx >= ox && cx < ox + d.width)
            painter.drawLine(int(cx), oy, int(cx), oy + d.height - 1);
        if (cy >= oy && cy < oy + d.height)
            painter.drawLine(ox, int(cy), ox + d.width - 1, int(cy));
    }
}

}  // namespace

QColor DisplayQColor(int32_t red, int32_t green, int32_t blue)
{
    const uint32_t c = DisplayColor(red, green, blue);
    return QColor((c >> 16) & 255, (c >> 8) & 255, c & 255);
}

void FillColor(QPainter& painter, const QRect& rect, QColor color)
{
    if (rect.isEmpty()) return;
    uint8_t cell[64];
    if (CurrentDisplayMode() != kDisplayPalette || !DitherFillCell(color.rgb() & 0xFFFFFF, cell)) {
        painter.fillRect(rect, color);
        return;
    }
    QImage tile(8, 8, QImage::Format_Indexed8);
    tile.setColorTable(PaletteTable());
    for (int y = 0; y < 8; ++y) std::copy(cell + y * 8, cell + y * 8 + 8, tile.scanLine(y));
    painter.fillRect(rect, QBrush(tile));
}

void PaintWindow(QPainter& painter, ImageWindow& record, int32_t clientWidth, int32_t clientHeight,
                 const QRect& clip)
{
    // A preview shows its display copy before it has an image of its own.
    const int32_t kind = record.image.kind ? record.image.kind : record.display.kind;
    switch (kind) {
    case kImageBinary:
    case kImageGray:
    case kImageColor: PaintPicture(painter, record, clientWidth, clientHeight, clip); break;
    case kImageSolid: {
        const uint8_t* c = record.image.rows ? record.image.rows[0] : nullptr;
        if (c)
            FillColor(painter, QRect(0, 0, clientWidth, clientHeight),
                      DisplayQColor(c[0], c[1], c[2]));
        break;
    }
    case kImageHistogram: {
        if (!record.image.rows) break;
        const QRect inner(4, 4, clientWidth - 8, clientHeight - 8);
        FillColor(painter, inner, QColor(0xC0, 0xC0, 0xC0));
        painter.setPen(Qt::black);
        for (const HistogramLine& line : HistogramLines(record.image, clientWidth, clientHeight))
            painter.drawLine(line.x, line.bottom, line.x, line.top);
        break;
    }
    default: break;
    }
}

QImage ThumbnailToScreen(const Image& image)
{
    if (!image.rows || image.kind < kImageBinary || image.kind > kImageColor) return {};
    const DisplayTables& t = CurrentDisplayTables();
    QImage picture(image.width, image.height, QImage::Format_RGB32);
    for (int32_t r = 0; r < image.height; ++r) {
        const uint8_t* in = image.rows[r];
        auto* out = reinterpret_cast<QRgb*>(picture.scanLine(image.height - 1 - r));
        for (int32_t x = 0; x < image.width; ++x) {
            switch (image.kind) {
            case kImageBinary: {
                const int32_t v = GetBit(in, x) ? 255 : 0;
                out[x] = qRgb(t.red[v], t.green[v], t.blue[v]);
                break;
            }
            case kImageGray: out[x] = qRgb(t.red[in[x]], t.green[in[x]], t.blue[in[x]]); break;
            default: out[x] = qRgb(in[3 * x + 2], in[3 * x + 1], in[3 * x]); break;
            }
        }
    }
    return picture;
}

}  // namespace lv
