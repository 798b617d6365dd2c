#include "transform/controls/ui/image_menu.h"

#include <QFontMetrics>
#include <QKeyEvent>
#include <QMdiArea>
#include <QMouseEvent>
#include <QPainter>
#include <algorithm>

#include "image/display_tables.h"
#include "image/pixel.h"
#include "image/thumbnail.h"
#include "image/ui/display_painter.h"
#include "image/ui/image_window.h"
#include "shell/text.h"
#include "shell/ui/events.h"
#include "shell/ui/metrics.h"
#include "transform/controls/ui/control_event.h"

namespace lv {

namespace {

const QColor kHotGray(0xC0, 0xC0, 0xC0);
const QColor kRowGray(0x80, 0x80, 0x80);

}  // namespace

// ---- Shared helpers -----------------------------------------------------------

QImage ThumbnailPicture(const Image& image, int32_t side)
{
    if (side <= 0) return {};
    if (image.kind == kImageSolid) {
        if (!image.rows) return {};
        const uint8_t* c = image.rows[0];
        QImage solid(side, side, QImage::Format_RGB32);
        solid.fill(DisplayQColor(c[0], c[1], c[2]));
        return solid;
    }
    Image small;
    if (make_thumbnail(image, small, side, side, false, true) != 0 || !small.rows ||
        small.kind < kImageBinary || small.kind > kImageColor)
        return {};
    return ThumbnailToScreen(small);
}

QMdiArea* FindWorkspace(QMdiArea* given, const QWidget* control, WindowHandle window)
{
    if (given) return given;
    for (const QWidget* w = control; w; w = w->parentWidget())
        if (auto* area = qobject_cast<QMdiArea*>(const_cast<QWidget*>(w))) return area;
    if (ImageSubWindow* image = ImageWindowOf(window)) return image->mdiArea();
    return nullptr;
}

ImageSubWindow* ImageWindowOf(WindowHandle window)
{
    // Only a handle the pool still knows names a live window.
    if (!window || !WindowRecord(window)) return nullptr;
    return dynamic_cast<ImageSubWindow*>(ObjectOf(window));
}

QString ImageWindowName(WindowHandle window)
{
    const ImageWindow* record = window ? WindowRecord(window) : nullptr;
    if (!record) return {};
    if (!record->fileName.empty()) return QString::fromStdString(record->fileName);
    return QString::fromStdString(FormatText("Untitled %d", int64_t{record->slot} + 1));
}

void ActivateImageWindow(WindowHandle window)
{
    ImageSubWindow* image = ImageWindowOf(window);
    if (!image) return;
    if (image->isMinimized()) image->showNormal();
    if (QMdiArea* area = image->mdiArea()) area->setActiveSubWindow(image);
    image->show();
}

// ---- The menu -----------------------------------------------------------------

ImageMenu::ImageMenu(QWidget* owner, int32_t controlId, QMdiArea* workspace)
    : QWidget(owner, Qt::Popup | Qt::FramelessWindowHint),
      owner_(owner),
      controlId_(controlId),
      workspace_(workspace)
{
    setAttribute(Qt::WA_DeleteOnClose);
    setAttribute(Qt::WA_NoMouseReplay);
    setMouseTracking(true);
    setFont(Metrics().fontSystem);
}

void ImageMenu::AddItem(int32_t index, WindowHandle window, const QString& text, QColor color)
{
    ImageMenuItem item;
    item.index = index;
    item.window = window;
    item.text = text;
    item.color = color;
    if (const ImageWindow* record = window ? WindowRecord(window) : nullptr)
        item.picture = ThumbnailPicture(record->image, kImageMenuPicture);
    items_.push_back(std::move(item));
}

QString ImageMenu::ItemText(int32_t row) const
{
    const ImageMenuItem& it = item(row);
    if (ImageSubWindow* image = ImageWindowOf(it.window)) return image->windowTitle();
    return it.text;
}

QRect ImageMenu::RowRect(int32_t row) const
{
    return QRect(0, row * kImageMenuRow, width(), kImageMenuRow);
}

int32_t ImageMenu::RowAt(QPoint at) const
{
    if (!rect().contains(at)) return -1;
    const int32_t row = at.y() / kImageMenuRow;
    return row < count() ? row : -1;
}

void ImageMenu::Open(QPoint globalPosition, int32_t current)
{
    initial_ = -1;
    pressed_ = false;
    for (int32_t row = 0; row < count(); ++row)
        if (item(row).index == current) initial_ = row;
    hot_ = initial_;
    const QFontMetrics metrics(Metrics().fontSystem);
    int32_t widest = 0;
    for (int32_t row = 0; row < count(); ++row)
        widest = std::max(widest, metrics.horizontalAdvance(ItemText(row)));
    const int32_t margin = Metrics().margin;
    resize(1 + kImageMenuPicture + 2 * margin + widest + margin,
           std::max(count(), 1) * kImageMenuRow + 1);
    QPoint at = globalPosition;
    if (workspace_) {
        const QRect area(workspace_->mapToGlobal(QPoint(0, 0)), workspace_->size());
        if (at.y() + height() > area.bottom() + 1) at.setY(area.bottom() + 1 - height());
        at.setY(std::max(at.y(), area.top()));
    }
    move(at);
    show();
    activateWindow();
}

void ImageMenu::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.fillRect(rect(), kRowGray);
    const int32_t margin = Metrics().margin;
    for (int32_t row = 0; row < count(); ++row) {
        const QRect r = RowRect(row);
        if (row == hot_) painter.fillRect(r, kHotGray);
        const QRect box(1, r.top() + 1, kImageMenuPicture, kImageMenuPicture);
        const ImageMenuItem& it = item(row);
        if (!it.window) {
            FillColor(painter, box,
                      DisplayQColor(it.color.red(), it.color.green(), it.color.blue()));
        } else if (!it.picture.isNull()) {
            const QPoint corner(box.left() + (box.width() - it.picture.width()) / 2,
                                box.top() + (box.height() - it.picture.height()) / 2);
            painter.drawImage(corner, it.picture);
        }
        painter.setPen(Qt::black);
        painter.drawText(QRect(box.right() + 1 + margin, r.top(), width(), r.height()),
                         Qt::AlignVCenter | Qt::AlignLeft, ItemText(row));
    }
}

void ImageMenu::Choose(int32_t row)
{
    if (row < 0 || row >= count()) return;
    const int32_t index = item(row).index;
    QPointer<QWidget> owner = owner_;
    const int32_t id = controlId_;
    close();
    SendControlMessage(owner.data(), kMsgImageMenuChoice, id, index);
}

void ImageMenu::mousePressEvent(QMouseEvent* event)
{
    const QPoint at = event->position().toPoint();
    if (!rect().contains(at)) {
        hot_ = initial_;
        close();
        return;
    }
    pressed_ = true;
    const int32_t row = RowAt(at);
    if (row >= 0 && row != hot_) {
        hot_ = row;
        update();
    }
}

void ImageMenu::mouseMoveEvent(QMouseEvent* event)
{
    const int32_t row = RowAt(event->position().toPoint());
    if (row < 0) return;
    // The pointer has come into the menu: its release now chooses.
    pressed_ = true;
    if (row != hot_) {
        hot_ = row;
        update();
    }
}

void ImageMenu::mouseReleaseEvent(QMouseEvent* event)
{
    // The release of the click that opened the menu chooses nothing, even
    // when the menu has come up under the pointer.
    if (event->button() != Qt::LeftButton || !pressed_) return;
    Choose(RowAt(event->position().toPoint()));
}

void ImageMenu::keyPressEvent(QKeyEvent* event)
{
    switch (event->key()) {
    case Qt::Key_Escape:
        hot_ = initial_;
        close();
        break;
    case Qt::Key_Return:
    case Qt::Key_Enter: Choose(hot_); break;
    case Qt::Key_Up:
        hot_ = std::max(hot_ - 1, 0);
        update();
        break;
    case Qt::Key_Down:
        hot_ = std::min(hot_ + 1, count() - 1);
        update();
        break;
    default: break;
    }
}

}  // namespace lv
