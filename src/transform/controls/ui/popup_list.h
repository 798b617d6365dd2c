// The popup list of panels: a label on the panel gray, then a box on
// 0xC0C0C0 with the current entry and an arrow. A left press opens the
// drop-down under the box, at most 24 lines high with a scroll bar beyond.
// A choice in the drop-down comes back to the list as 1067; the list keeps
// it and sends 1025 to its parent, also when the same entry is chosen again.
#pragma once

#include <QPointer>
#include <QWidget>
#include <cstdint>
#include <string>
#include <vector>

#include "shell/messages.h"

class QScrollBar;
class QTimer;

namespace lv {

inline constexpr int32_t kPopupVisibleLines = 24;

class PopupListControl;

// The open drop-down: a pop-up window that holds the pointer and the keys.
// Moving highlights an enabled entry; Enter, Space or a release over an
// enabled entry chooses it; Escape or a press outside closes it unchanged;
// Home, End, Up and Down move the highlight over enabled entries. Holding
// the button above or below it scrolls. It deletes itself when it closes.
class PopupDrop : public QWidget {
public:
    PopupDrop(PopupListControl* list, int32_t width);

    int32_t highlight() const { return highlight_; }
    int32_t topLine() const { return top_; }
    bool hasScrollBar() const { return scroll_ != nullptr; }
    QScrollBar* scrollBar() const { return scroll_; }
    // The rectangle of an entry in the drop-down's coordinates (empty when
    // scrolled out of view).
    QRect EntryRect(int32_t index) const;

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;

private:
    int32_t LineHeight() const;
    int32_t VisibleLines() const;
    int32_t EntryAt(QPoint at) const;
    void SetHighlight(int32_t index);
    void ScrollTo(int32_t top);
    void Choose(int32_t index);

    PopupListControl* list_;
    QScrollBar* scroll_ = nullptr;
    QTimer* autoScroll_;
    int32_t scrollStep_ = 0;
    int32_t highlight_;
    int32_t top_ = 0;
};

class PopupListControl : public QWidget {
public:
    // A list at (x, y) from packed text (see slider_math.h: PackPopupText),
    // showing entry `value`. Creating it sends nothing.
    PopupListControl(int32_t x, int32_t y, QWidget* parent, int32_t value,
                     const std::string& packedText, int32_t controlId);
    ~PopupListControl() override;

    int32_t current() const { return current_; }
    int32_t count() const { return static_cast<int32_t>(entries_.size()); }
    int32_t controlId() const { return controlId_; }
    bool hasScroll() const { return count() > kPopupVisibleLines; }
    const QString& entry(int32_t index) const { return entries_[static_cast<size_t>(index)]; }
    bool IsDisabled(int32_t index) const;
    const std::vector<bool>& disabled() const { return disabled_; }

    // Takes the index when it is in range, repaints and sends 1025; an index
    // out of range does nothing.
    void SetPopup(int32_t value);
    void DisableEntry(int32_t index, bool disabled);

    // Opens the drop-down (a left press on the control does the same).
    void OpenDrop();
    PopupDrop* drop() const { return drop_; }
    // The box with the entry and the arrow, in the control's coordinates.
    QRect BoxRect() const;

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    int32_t controlId_;
    int32_t current_;
    QString label_;
    std::vector<QString> entries_;
    std::vector<bool> disabled_;
    int32_t labelWidth_;
    int32_t listWidth_;
    QPointer<PopupDrop> drop_;
};

}  // namespace lv
