// How a panel control talks to its panel: a private message of
// shell/messages.h (kMsgValueChanged, kMsgAmountChanged, kMsgSliderMoved, ...)
// with the control's identifier and a value, sent to the control's parent
// widget.
#pragma once

#include <QCoreApplication>
#include <QEvent>
#include <QPointer>
#include <QWidget>
#include <cstdint>

namespace lv {

class ControlEvent : public QEvent {
public:
    ControlEvent(int32_t message, int32_t controlId, int64_t value)
        : QEvent(EventType()), message(message), controlId(controlId), value(value)
    {
    }
    static QEvent::Type EventType()
    {
        static const QEvent::Type type = static_cast<QEvent::Type>(QEvent::registerEventType());
        return type;
    }
    int32_t message;
    int32_t controlId;
    int64_t value;
};

// Sends the message to `to` (a control's parent, or its owner) at once.
inline void SendControlMessage(QObject* to, int32_t message, int32_t controlId, int64_t value)
{
    if (!to) return;
    ControlEvent event(message, controlId, value);
    QCoreApplication::sendEvent(to, &event);
}

// Two signed 16-bit values in one: the low half and the high half, as the
// slider packs its two markers.
inline int64_t PackPair(int32_t low, int32_t high)
{
    return static_cast<int64_t>(static_cast<uint16_t>(low)) |
           static_cast<int64_t>(static_cast<uint16_t>(high)) << 16;
}
inline int32_t LowHalf(int64_t v) { return static_cast<int16_t>(v & 0xFFFF); }
inline int32_t HighHalf(int64_t v) { return static_cast<int16_t>((v >> 16) & 0xFFFF); }

// The holder of one control in a panel's layout. The control reports to its
// parent, this row, which passes every message on to the panel that owns it:
// a plain widget would swallow them.
class ControlRow : public QWidget {
public:
    explicit ControlRow(QObject* owner) : owner_(owner) {}

protected:
    bool event(QEvent* event) override
    {
        if (event->type() == ControlEvent::EventType())
            return owner_ && QCoreApplication::sendEvent(owner_, event);
        return QWidget::event(event);
    }

private:
    QPointer<QObject> owner_;
};

}  // namespace lv
