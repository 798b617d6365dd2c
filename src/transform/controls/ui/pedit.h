// The text field of panels: a label and a line edit. Each change of the
// text sends 1042 to the parent; taking the focus selects the whole text;
// Tab and Shift+Tab in the edit go to the parent as 1059 and 1060 with the
// control's identifier, so that a panel steps its own focus.
#pragma once

#include <QLineEdit>
#include <QWidget>
#include <cstdint>

#include "shell/messages.h"

namespace lv {

// The edit inside Integer and PEdit: hands Tab and Shift+Tab to the control's
// parent instead of moving the focus, and selects all its text when the
// focus comes by the keyboard or from the program.
class ControlLineEdit : public QLineEdit {
public:
    ControlLineEdit(QWidget* control, int32_t controlId);

protected:
    bool event(QEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;

private:
    QWidget* control_;
    int32_t controlId_;
};

class PEditControl : public QWidget {
public:
    // A label sized to its text, then an edit of `editWidth` pixels with the
    // initial text. Creating it sends nothing.
    PEditControl(int32_t x, int32_t y, int32_t editWidth, QWidget* parent, const QString& label,
                 const QString& text, int32_t controlId);

    QString text() const;
    // Replaces the text without sending 1042.
    void SetText(const QString& text);
    QLineEdit* edit() const { return edit_; }
    int32_t controlId() const { return controlId_; }

private:
    int32_t controlId_;
    int32_t labelWidth_;
    ControlLineEdit* edit_;
    bool quiet_ = false;
};

// The width of a label in the panel font with the standard gap after it; 0
// for an empty label.
int32_t ControlLabelWidth(const QString& label);
// The panel look for a control: the panel font, gray 0x808080 behind black
// text, edit fields and buttons on 0xC0C0C0.
void ApplyPanelStyle(QWidget* control);

}  // namespace lv
