// The integer field of panels: a label, an edit and up-down arrows tied to
// it. At each change of the text the field reads it again: text that isn't
// a number beeps and brings the value back, a number out of range beeps and
// takes the limit; a value that then differs is kept and sent to the parent
// as 1048. The focus goes to the edit; Tab and Shift+Tab in the edit reach
// the parent as 1059 and 1060.
#pragma once

#include <QWidget>
#include <cstdint>

class QToolButton;

namespace lv {

class ControlLineEdit;

class IntegerControl : public QWidget {
public:
    // The value is clamped to the range; creating the field sends nothing.
    IntegerControl(int32_t x, int32_t y, int32_t editWidth, QWidget* parent, const QString& label,
                   int32_t value, int32_t minimum, int32_t maximum, int32_t controlId);

    int32_t value() const { return value_; }
    // Clamps to the range and shows the value without telling the parent.
    void SetValue(int32_t value);
    int32_t minimum() const { return minimum_; }
    int32_t maximum() const { return maximum_; }
    int32_t controlId() const { return controlId_; }
    ControlLineEdit* edit() const { return edit_; }
    // The arrows: one step up or down, through the edit's text.
    void StepBy(int32_t steps);

protected:
    // Up and Down in the edit step the value, as the arrows do.
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void TextChanged();
    void ShowValue();

    int32_t controlId_;
    int32_t minimum_;
    int32_t maximum_;
    int32_t value_;
    int32_t labelWidth_;
    ControlLineEdit* edit_;
    QToolButton* up_;
    QToolButton* down_;
    bool rewriting_ = false;
};

}  // namespace lv
