#include "shell/ui/workspace.h"

#include <QAction>
#include <QIcon>
#include <QLinearGradient>
#include <QMenu>
#include <QMouseEvent>
#include <QPaintEvent>
#include <QPainter>
#include <QPainterPath>
#include <QPixmap>
#include <QtGlobal>
#include <cmath>

#include "files/library.h"
#include "image/display.h"
#include "image/ui/display_painter.h"
#include "shell/preferences.h"
#include "shell/ui/metrics.h"
#include "shell/version.h"

namespace lv {

namespace {

constexpr int kSplashWidth = 300, kSplashHeight = 254;
constexpr int kCreditWidth = 300, kCreditHeight = 60;

// The splash art: an aperture of six blades over an evening sky, and the
// program's name.
// Six blades round an opening, drawn into a square of side `outer` * 2.
void PaintAperture(QPainter& p, QPointF centre, double outer, double inner, QColor line)
{
    for (int blade = 0; blade < 6; ++blade) {
        const double a = blade * M_PI / 3.0, b = a + M_PI / 3.0;
        QPainterPath path;
        path.moveTo(centre + QPointF(std::cos(a) * inner, std::sin(a) * inner));
        path.lineTo(centre + QPointF(std::cos(a) * outer, std::sin(a) * outer));
        path.lineTo(centre + QPointF(std::cos(b) * outer, std::sin(b) * outer));
        path.lineTo(centre + QPointF(std::cos(b + 0.35) * inner, std::sin(b + 0.35) * inner));
        path.closeSubpath();
        p.fillPath(path, QColor(20, 20, 24, 200 - blade * 12));
        p.setPen(QPen(line, outer / 50.0));
        p.drawPath(path);
    }
}

void PaintSplash(QPainter& p, const QRect& r)
{
    QLinearGradient sky(r.topLeft(), r.bottomLeft());
    sky.setColorAt(0.0, QColor(24, 38, 74));
    sky.setColorAt(0.65, QColor(196, 104, 64));
    sky.setColorAt(1.0, QColor(238, 186, 110));
    p.fillRect(r, sky);
    p.setRenderHint(QPainter::Antialiasing);
    PaintAperture(p, QPointF(r.center().x(), r.top() + 100), 62, 24, QColor(250, 230, 200));
    p.setPen(QColor(255, 248, 235));
    QFont title = Metrics().fontSystem;
    title.setPixelSize(34);
    title.setBold(true);
    p.setFont(title);
    p.drawText(QRect(r.left(), r.top() + 170, r.width(), 44), Qt::AlignCenter,
               QStringLiteral("Lumivue 2.0"));
    QFont line = Metrics().fontSystem;
    line.setPixelSize(13);
    p.setFont(line);
    p.drawText(QRect(r.left(), r.top() + 212, r.width(), 20), Qt::AlignCenter,
               QStringLiteral("An image editor for photographers"));
    p.setRenderHint(QPainter::Antialiasing, false);
    p.setPen(QColor(20, 20, 24));
    p.drawRect(r.adjusted(0, 0, -1, -1));
}

void PaintCredit(QPainter& p, const QRect& r)
{
    p.fillRect(r, QColor(236, 232, 224));
    p.setPen(QColor(20, 20, 24));
    p.drawRect(r.adjusted(0, 0, -1, -1));
    p.setFont(Metrics().fontSystem);
    p.drawText(r.adjusted(8, 4, -8, -4), Qt::AlignCenter | Qt::TextWordWrap,
               QStringLiteral("Built with ") + LinkedLibraries());
}

}  // namespace

QIcon ProgramIcon()
{
    QPixmap pixmap(64, 64);
    pixmap.fill(Qt::transparent);
    QPainter p(&pixmap);
    p.setRenderHint(QPainter::Antialiasing);
    p.setBrush(QColor(196, 104, 64));
    p.setPen(Qt::NoPen);
    p.drawEllipse(QRectF(1, 1, 62, 62));
    PaintAperture(p, QPointF(32, 32), 28, 10, QColor(250, 230, 200));
    return QIcon(pixmap);
}

QString LinkedLibraries()
{
    return QStringLiteral("Qt %1, %2")
        .arg(QString::fromLatin1(qVersion()), QString::fromStdString(LibraryVersions()));
}

Workspace::Workspace(QWidget* parent) : QMdiArea(parent)
{
    // When a window goes, the one that was active before it takes over, as
    // the window under it would; not the next one in order of creation.
    setActivationOrder(QMdiArea::ActivationHistoryOrder);
    UpdateBackground();
}

void Workspace::UpdateBackground()
{
    const Preferences& p = CurrentPreferences();
    setBackground(DisplayQColor(p.workspaceColor[0], p.workspaceColor[1], p.workspaceColor[2]));
    viewport()->update();
}

void Workspace::ShowSplash()
{
    splashShown_ = true;
    viewport()->update();
}

void Workspace::HideSplash()
{
    if (!splashShown_) return;
    splashShown_ = false;
    viewport()->update();
}

void Workspace::paintEvent(QPaintEvent* event)
{
    QMdiArea::paintEvent(event);
    QPainter p(viewport());
    if (CurrentDisplayMode() == kDisplayPalette) {
        // The palette has no such gray: the workspace is dithered as well.
        const Preferences& pref = CurrentPreferences();
        FillColor(
            p, event->rect(),
            DisplayQColor(pref.workspaceColor[0], pref.workspaceColor[1], pref.workspaceColor[2]));
    }
    if (!splashShown_) return;
    const QRect area = viewport()->rect();
    PaintSplash(p, QRect(area.center().x() - kSplashWidth / 2,
                         area.center().y() - kSplashHeight / 2, kSplashWidth, kSplashHeight));
    const int m = Metrics().margin;
    PaintCredit(p, QRect(area.right() - m - kCreditWidth + 1, area.bottom() - m - kCreditHeight + 1,
                         kCreditWidth, kCreditHeight));
}

bool Workspace::viewportEvent(QEvent* event)
{
    if (event->type() == QEvent::MouseButtonPress && splashShown_) {
        HideSplash();
        return true;
    }
    return QMdiArea::viewportEvent(event);
}

void ClearSystemMenuKeys(QMdiSubWindow* window)
{
    if (QMenu* menu = window ? window->systemMenu() : nullptr)
        for (QAction* action : menu->actions()) action->setShortcut(QKeySequence());
}

}  // namespace lv
