#include "shell/ui/ribbon_icons.h"

#include <QPainter>
#include <QPainterPath>
#include <QPixmap>

#include "shell/commands.h"

namespace lv {

namespace {

constexpr int kSide = 24;  // the picture's size in the bar, drawn twice as fine

const QColor kInk(40, 40, 40);
const QColor kPaper(250, 250, 245);
const QColor kAccent(40, 110, 200);

// A magnifying glass with `mark` inside: '+', '-' or ' '.
void Magnifier(QPainter& p, char mark)
{
    p.setPen(QPen(kInk, 2));
    p.setBrush(kPaper);
    p.drawEllipse(QPointF(10, 10), 6.5, 6.5);
    p.setPen(QPen(kInk, 3, Qt::SolidLine, Qt::RoundCap));
    p.drawLine(QPointF(15, 15), QPointF(21, 21));
    p.setPen(QPen(kAccent, 2));
    if (mark == '+' || mark == '-') p.drawLine(QPointF(7, 10), QPointF(13, 10));
    if (mark == '+') p.drawLine(QPointF(10, 7), QPointF(10, 13));
}

void Draw(QPainter& p, int32_t command)
{
    p.setRenderHint(QPainter::Antialiasing);
    switch (command) {
    case kCmdOpen:
    case kCmdOpenPhotoCd: {
        // An open folder; the PhotoCD's has a disc on it.
        p.setPen(QPen(kInk, 1.5));
        p.setBrush(QColor(230, 190, 90));
        p.drawRect(QRectF(3, 7, 17, 12));
        p.setBrush(QColor(245, 210, 120));
        QPainterPath flap;
        flap.moveTo(3, 19);
        flap.lineTo(7, 11);
        flap.lineTo(22, 11);
        flap.lineTo(20, 19);
        flap.closeSubpath();
        p.drawPath(flap);
        if (command == kCmdOpenPhotoCd) {
            p.setBrush(QColor(200, 200, 220));
            p.drawEllipse(QPointF(16, 8), 5, 5);
            p.setBrush(kPaper);
            p.drawEllipse(QPointF(16, 8), 1.2, 1.2);
        }
        break;
    }
    case kCmdSave:
        // A diskette.
        p.setPen(QPen(kInk, 1.5));
        p.setBrush(kAccent);
        p.drawRect(QRectF(4, 4, 16, 16));
        p.setBrush(kPaper);
        p.drawRect(QRectF(7, 4, 10, 6));
        p.drawRect(QRectF(7, 13, 10, 7));
        break;
    case kCmdBrowse:
        // Thumbnails in a grid.
        p.setPen(QPen(kInk, 1));
        for (int y = 0; y < 2; ++y)
            for (int x = 0; x < 2; ++x) {
                p.setBrush(x == y ? kAccent : QColor(120, 170, 90));
                p.drawRect(QRectF(3 + x * 10, 3 + y * 10, 8, 8));
            }
        break;
    case kCmdAcquire:
        // A scanner's glass under its lid.
        p.setPen(QPen(kInk, 1.5));
        p.setBrush(QColor(200, 200, 200));
        p.drawRect(QRectF(3, 11, 18, 8));
        p.setBrush(kAccent);
        p.drawRect(QRectF(5, 13, 14, 2));
        p.drawLine(QPointF(3, 9), QPointF(20, 5));
        break;
    case kCmdZoomIn: Magnifier(p, '+'); break;
    case kCmdZoomOut: Magnifier(p, '-'); break;
    case kCmdZoomTool:
    case kCmdMagnifier: Magnifier(p, ' '); break;
    case kCmdZoomInResize:
        Magnifier(p, '+');
        p.setPen(QPen(kAccent, 1.5));
        p.drawLine(QPointF(17, 3), QPointF(21, 3));
        p.drawLine(QPointF(21, 3), QPointF(21, 7));
        break;
    case kCmdZoomActual: {
        QFont font = p.font();
        font.setPixelSize(11);
        font.setBold(true);
        p.setFont(font);
        p.setPen(kInk);
        p.drawText(QRectF(0, 0, kSide, kSide), Qt::AlignCenter, QStringLiteral("1:1"));
        break;
    }
    case kCmdFit:
        // A frame with arrows drawn in.
        p.setPen(QPen(kInk, 1.5));
        p.setBrush(Qt::NoBrush);
        p.drawRect(QRectF(3, 3, 18, 18));
        p.setPen(QPen(kAccent, 2));
        p.drawLine(QPointF(6, 6), QPointF(10, 10));
        p.drawLine(QPointF(18, 18), QPointF(14, 14));
        p.drawLine(QPointF(18, 6), QPointF(14, 10));
        p.drawLine(QPointF(6, 18), QPointF(10, 14));
        break;
    case kCmdNext: {
        // Two windows and an arrow from one to the other.
        p.setPen(QPen(kInk, 1.2));
        p.setBrush(kPaper);
        p.drawRect(QRectF(2, 3, 11, 9));
        p.drawRect(QRectF(11, 12, 11, 9));
        p.setPen(QPen(kAccent, 2));
        p.drawLine(QPointF(7, 14), QPointF(7, 19));
        p.drawLine(QPointF(7, 19), QPointF(10, 19));
        break;
    }
    case kCmdMaskNew:
        // A dashed outline round a soft spot.
        p.setPen(QPen(kInk, 1.5, Qt::DashLine));
        p.setBrush(QColor(180, 180, 180));
        p.drawEllipse(QPointF(12, 12), 8, 6);
        break;
    case kCmdReadout:
        // A pipette.
        p.setPen(QPen(kInk, 3, Qt::SolidLine, Qt::RoundCap));
        p.drawLine(QPointF(6, 18), QPointF(16, 8));
        p.setPen(QPen(kAccent, 4, Qt::SolidLine, Qt::RoundCap));
        p.drawLine(QPointF(16, 8), QPointF(19, 5));
        break;
    case kCmdClone:
        // A stamp.
        p.setPen(QPen(kInk, 1.5));
        p.setBrush(QColor(170, 120, 80));
        p.drawEllipse(QPointF(12, 6), 3.5, 3.5);
        p.drawRect(QRectF(10, 9, 4, 6));
        p.setBrush(kAccent);
        p.drawRect(QRectF(5, 15, 14, 5));
        break;
    case kCmdPaint:
        // A brush.
        p.setPen(QPen(QColor(150, 100, 60), 3, Qt::SolidLine, Qt::RoundCap));
        p.drawLine(QPointF(19, 4), QPointF(11, 13));
        p.setPen(Qt::NoPen);
        p.setBrush(kAccent);
        p.drawEllipse(QPointF(8, 16), 4, 4);
        break;
    case kCmdLineArrow: {
        p.setPen(QPen(kInk, 2, Qt::SolidLine, Qt::RoundCap));
        p.drawLine(QPointF(4, 20), QPointF(19, 5));
        QPainterPath head;
        head.moveTo(20, 4);
        head.lineTo(13, 6);
        head.lineTo(18, 11);
        head.closeSubpath();
        p.setBrush(kInk);
        p.drawPath(head);
        break;
    }
    default:
        // The tools' box.
        p.setPen(QPen(kInk, 1.5));
        p.setBrush(QColor(200, 60, 50));
        p.drawRect(QRectF(3, 9, 18, 11));
        p.setBrush(Qt::NoBrush);
        p.drawRect(QRectF(9, 5, 6, 4));
        break;
    }
}

}  // namespace

QIcon RibbonIcon(int32_t command)
{
    QPixmap picture(2 * kSide, 2 * kSide);
    picture.fill(Qt::transparent);
    {
        QPainter p(&picture);
        p.scale(2, 2);
        Draw(p, command);
    }
    picture.setDevicePixelRatio(2);
    return QIcon(picture);
}

}  // namespace lv
