#include "shell/ui/metrics.h"

#include <QApplication>
#include <QFontMetrics>
#include <QScreen>
#include <QStyle>

namespace lv {

namespace {

UiMetrics gMetrics;
bool gReady = false;

QFont MakeFont(const char* family, QFont::StyleHint hint, int pixels)
{
    QFont font(QString::fromLatin1(family));
    font.setStyleHint(hint);
    font.setPixelSize(pixels);
    font.setWeight(QFont::Normal);
    return font;
}

}  // namespace

void InitMetrics()
{
    if (gReady) return;
    gReady = true;
    UiMetrics& m = gMetrics;
    m.fontSystem = MakeFont("Sans Serif", QFont::SansSerif, 13);
    m.fontSmall = MakeFont("Serif", QFont::Serif, 11);

    const QStyle* style = QApplication::style();
    // An MDI child's frame is the sizing frame; the style's title bar height
    // counts the frame above the caption, so that part is taken off here and
    // a child's outer height is the caption plus a frame above and below.
    m.cxFrame = style->pixelMetric(QStyle::PM_MdiSubWindowFrameWidth);
    m.cyFrame = m.cxFrame;
    m.captionHeight = style->pixelMetric(QStyle::PM_TitleBarHeight) - m.cyFrame;

    const int32_t systemHeight = QFontMetrics(m.fontSystem).height();
    const int32_t smallHeight = QFontMetrics(m.fontSmall).height();
    m.textHeight = systemHeight + 1;
    m.textHeightSmall = smallHeight + 1;
    m.controlHeight = systemHeight + 2 * m.cyFrame;
    m.controlHeightSmall = smallHeight + 2 * m.cyFrame;
    m.margin = m.controlHeight / 4;
    m.iconSize = 17;

    m.cxVScroll = style->pixelMetric(QStyle::PM_ScrollBarExtent);
    m.cyHScroll = m.cxVScroll;
    m.cxChildBorder = 2 * m.cxFrame;
    m.cyChildBorder = m.captionHeight + 2 * m.cyFrame;
    m.cxPanelBorder = m.cxChildBorder;
    m.cyPanelBorder = m.cyChildBorder;

    if (const QScreen* screen = QGuiApplication::primaryScreen()) {
        m.cxScreen = screen->geometry().width();
        m.cyScreen = screen->geometry().height();
    }
}

const UiMetrics& Metrics()
{
    if (!gReady) InitMetrics();
    return gMetrics;
}

}  // namespace lv
