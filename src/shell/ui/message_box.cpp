#include "shell/ui/message_box.h"

#include <QApplication>
#include <QKeyEvent>
#include <QPainter>
#include <QPushButton>
#include <QScreen>
#include <QStringList>
#include <algorithm>

#include "shell/frontend.h"
#include "shell/ui/metrics.h"

namespace lv {

namespace {

MessageBoxAnswerer gAnswerer;

// The text of the box: each line centered in its own row of textHeight, with
// '&' shown as it is.
class MessageText : public QWidget {
public:
    MessageText(const QStringList& lines, QWidget* parent) : QWidget(parent), lines_(lines) {}

protected:
    void paintEvent(QPaintEvent*) override
    {
        QPainter painter(this);
        painter.fillRect(rect(), Qt::white);
        painter.setPen(Qt::black);
        painter.setFont(Metrics().fontSystem);
        const int32_t row = Metrics().textHeight;
        for (qsizetype i = 0; i < lines_.size(); ++i) {
            painter.drawText(QRect(0, static_cast<int>(i) * row, width(), row),
                             Qt::AlignHCenter | Qt::AlignTop | Qt::TextSingleLine, lines_[i]);
        }
    }

private:
    QStringList lines_;
};

struct ButtonDef {
    const char* label;
    int32_t answer;
};

// The buttons of a mode, left to right; the answer of Escape.
std::vector<ButtonDef> ButtonsOf(int32_t mode, int32_t& escape)
{
    switch (mode) {
    case kBoxOk: escape = kAnswerOk; return {{"OK", kAnswerOk}};
    case kBoxOkCancel:
        escape = kAnswerCancel;
        return {{"OK", kAnswerOk}, {"&Cancel", kAnswerCancel}};
    case kBoxYesNoCancel:
        escape = kAnswerCancel;
        return {{"&Yes", kAnswerYes}, {"&No", kAnswerNo}, {"&Cancel", kAnswerCancel}};
    case kBoxYesNo: escape = kAnswerNo; return {{"&Yes", kAnswerYes}, {"&No", kAnswerNo}};
    default: escape = kAnswerCancel; return {};
    }
}

// The letter after '&' in a label, upper case; 0 when there is none.
QChar MnemonicOf(const QString& label)
{
    const qsizetype at = label.indexOf(QLatin1Char('&'));
    return at >= 0 && at + 1 < label.size() ? label[at + 1].toUpper() : QChar();
}

}  // namespace

MessageBoxDialog::MessageBoxDialog(QWidget* owner, const QString& caption, int32_t mode,
                                   const QString& text)
    : QDialog(owner, Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint |
                         Qt::WindowCloseButtonHint)
{
    const UiMetrics& m = Metrics();
    const QFontMetrics fm(m.fontSystem);
    const QStringList lines = text.split(QLatin1Char('\n'));

    int32_t widest = 0;
    for (const QString& line : lines) widest = std::max(widest, fm.horizontalAdvance(line));
    // Wide enough for the caption too, beside the title bar's buttons.
    const int32_t captionWidth = fm.horizontalAdvance(caption) + 4 * m.controlHeight;
    const int32_t textWidth = std::max({widest + 2 * m.margin, 200, captionWidth});
    const int32_t textRows = static_cast<int32_t>(lines.size()) * m.textHeight;
    const int32_t clientWidth = textWidth + 2 * m.margin;
    const int32_t clientHeight = textRows + m.controlHeight + 3 * m.margin;

    setWindowTitle(caption);
    setFixedSize(clientWidth, clientHeight);
    QPalette white = palette();
    white.setColor(QPalette::Window, Qt::white);
    white.setColor(QPalette::WindowText, Qt::black);
    setPalette(white);
    setAutoFillBackground(true);
    setFocusPolicy(Qt::StrongFocus);

    auto* label = new MessageText(lines, this);
    label->setGeometry(m.margin, m.margin, textWidth, textRows);

    const std::vector<ButtonDef> defs = ButtonsOf(mode, escapeAnswer_);
    int32_t buttonWidth = 0;
    for (const ButtonDef& def : defs) {
        QString shown = QString::fromLatin1(def.label);
        shown.remove(QLatin1Char('&'));
        buttonWidth = std::max(buttonWidth, fm.horizontalAdvance(shown) + 2 * m.margin);
    }
    const auto count = static_cast<int32_t>(defs.size());
    const int32_t rowWidth = count * buttonWidth + (count > 0 ? (count - 1) * m.margin : 0);
    int32_t x = (clientWidth - rowWidth) / 2;
    const int32_t y = m.margin + textRows + m.margin;
    for (const ButtonDef& def : defs) {
        auto* button = new QPushButton(QString::fromLatin1(def.label), this);
        button->setFont(m.fontSystem);
        button->setGeometry(x, y, buttonWidth, m.controlHeight);
        const int32_t answer = def.answer;
        connect(button, &QPushButton::clicked, this, [this, answer] { done(answer); });
        buttons_.push_back(button);
        answers_.push_back(answer);
        x += buttonWidth + m.margin;
    }

    // Centered on the screen the owner is on.
    const QScreen* screen = owner ? owner->screen() : QGuiApplication::primaryScreen();
    if (screen) {
        const QRect area = screen->geometry();
        move(area.x() + (area.width() - clientWidth) / 2,
             area.y() + (area.height() - clientHeight) / 2);
    }
}

int32_t MessageBoxDialog::enterAnswer() const
{
    return answers_.empty() ? kAnswerCancel : answers_.front();
}

void MessageBoxDialog::reject() { done(escapeAnswer_); }

void MessageBoxDialog::keyPressEvent(QKeyEvent* event)
{
    const int key = event->key();
    if (event->modifiers() & ~(Qt::KeypadModifier | Qt::ShiftModifier)) {
        QDialog::keyPressEvent(event);
        return;
    }
    if (key == Qt::Key_Escape) {
        reject();
        return;
    }
    if (key == Qt::Key_Return || key == Qt::Key_Enter) {
        // A focused button takes Enter itself; here the box has the focus.
        done(enterAnswer());
        return;
    }
    // A button's underlined letter pressed alone chooses it, as in any
    // dialog box.
    const QString typed = event->text().toUpper();
    if (typed.size() == 1) {
        for (size_t i = 0; i < buttons_.size(); ++i) {
            if (MnemonicOf(buttons_[i]->text()) == typed[0]) {
                done(answers_[i]);
                return;
            }
        }
    }
    QDialog::keyPressEvent(event);
}

void MessageBoxDialog::showEvent(QShowEvent* event)
{
    QDialog::showEvent(event);
    // The box itself takes the keyboard, so Enter means the first button
    // until the user moves to another.
    setFocus(Qt::OtherFocusReason);
}

int32_t ShowMessageBox(QWidget* owner, const QString& caption, int32_t mode, const QString& text)
{
    if (gAnswerer) return gAnswerer(caption, mode, text);
    if (QWidget* grabber = QWidget::mouseGrabber()) grabber->releaseMouse();
    MessageBoxDialog box(owner, caption, mode, text);
    return box.exec();
}

void SetMessageBoxAnswerer(MessageBoxAnswerer answerer) { gAnswerer = std::move(answerer); }

}  // namespace lv
