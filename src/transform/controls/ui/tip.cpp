#include "transform/controls/ui/tip.h"

#include <QFontMetrics>
#include <QPainter>
#include <QPointer>
#include <QWidget>
#include <algorithm>

#include "shell/ui/metrics.h"

namespace lv {

namespace {

// The box, a child of the top-level window it is kept inside, so that hiding
// it simply uncovers what it lay over.
class TipBox : public QWidget {
public:
    explicit TipBox(QWidget* top) : QWidget(top)
    {
        setAttribute(Qt::WA_TransparentForMouseEvents);
        setFocusPolicy(Qt::NoFocus);
        setFont(Metrics().fontSystem);
    }

    void SetText(const QString& text)
    {
        text_ = text;
        update();
    }
    const QString& text() const { return text_; }

protected:
    void paintEvent(QPaintEvent*) override
    {
        QPainter painter(this);
        painter.fillRect(rect(), Qt::white);
        painter.setPen(Qt::black);
        painter.drawRect(rect().adjusted(0, 0, -1, -1));
        painter.setFont(font());
        painter.drawText(QRect(Metrics().margin, 0, width() - 2 * Metrics().margin, height()),
                         Qt::AlignLeft | Qt::AlignVCenter, text_);
    }

private:
    QString text_;
};

QPointer<TipBox> gTip;

}  // namespace

void ShowTip(QPoint globalPos, QWidget* reference, const QString& text)
{
    HideTip();
    if (!reference || text.isEmpty()) return;
    QWidget* top = reference->window();
    if (gTip && gTip->parentWidget() != top) delete gTip.data();
    if (!gTip) gTip = new TipBox(top);

    const UiMetrics& m = Metrics();
    const int32_t width = QFontMetrics(m.fontSystem).horizontalAdvance(text) + 2 * m.margin;
    const int32_t height = m.controlHeight;
    QPoint at = top->mapFromGlobal(globalPos);
    at.setX(std::max(0, std::min(at.x(), top->width() - width)));
    at.setY(std::max(0, std::min(at.y(), top->height() - height)));
    gTip->SetText(text);
    gTip->setGeometry(at.x(), at.y(), width, height);
    gTip->raise();
    gTip->show();
}

void HideTip()
{
    if (gTip) gTip->hide();
}

QWidget* ShownTip() { return gTip && gTip->isVisible() ? gTip.data() : nullptr; }

}  // namespace lv
