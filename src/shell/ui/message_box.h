// The program's one message box: white, its text centered line by line, a
// row of equal buttons in the panels' font.
#pragma once

#include <QDialog>
#include <QString>
#include <cstdint>
#include <functional>
#include <vector>

class QPushButton;

namespace lv {

// The dialog itself. exec() returns the answer: 1 OK, 2 Cancel, 6 Yes, 7 No.
// Modes: 0 "OK"; 1 "OK" "&Cancel"; 3 "&Yes" "&No" "&Cancel"; 4 "&Yes" "&No".
// Escape answers Cancel when there is a Cancel button, No in mode 4 and OK in
// mode 0; Enter answers the focused button, or the first one when the box
// itself has the focus. Another mode has no buttons and every way out
// answers Cancel.
class MessageBoxDialog : public QDialog {
public:
    MessageBoxDialog(QWidget* owner, const QString& caption, int32_t mode, const QString& text);

    int32_t escapeAnswer() const { return escapeAnswer_; }
    int32_t enterAnswer() const;
    const std::vector<QPushButton*>& buttons() const { return buttons_; }

    void reject() override;

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void showEvent(QShowEvent* event) override;

private:
    std::vector<QPushButton*> buttons_;
    std::vector<int32_t> answers_;
    int32_t escapeAnswer_ = 2;
};

// Shows the box modally over `owner` and returns the answer. Any mouse grab
// is released first.
int32_t ShowMessageBox(QWidget* owner, const QString& caption, int32_t mode, const QString& text);

// Test hook: while an answerer is set, ShowMessageBox calls it with the
// caption, mode and text instead of showing anything, and returns its
// answer. An empty function removes it.
using MessageBoxAnswerer =
    std::function<int32_t(const QString& caption, int32_t mode, const QString& text)>;
void SetMessageBoxAnswerer(MessageBoxAnswerer answerer);

}  // namespace lv
