// The engine's messages to windows, as Qt events.
//
// The engine names windows by opaque handles. In the editor a handle is the
// address of the window's QObject, made with HandleOf and turned back with
// ObjectOf; the engine only compares handles and hands them back.
#pragma once

#include <QEvent>
#include <QObject>
#include <cstdint>

#include "shell/frontend.h"

namespace lv {

inline WindowHandle HandleOf(const QObject* object) { return static_cast<const void*>(object); }

inline QObject* ObjectOf(WindowHandle handle)
{
    return const_cast<QObject*>(static_cast<const QObject*>(handle));
}

// A private message (1058 image changed, 1063 renamed, 1066 view changed,
// ...) about an image window.
class UserMessageEvent : public QEvent {
public:
    UserMessageEvent(int32_t message, WindowHandle about)
        : QEvent(EventType()), message(message), about(about)
    {
    }

    static QEvent::Type EventType()
    {
        static const QEvent::Type type = static_cast<QEvent::Type>(QEvent::registerEventType());
        return type;
    }

    int32_t message;
    WindowHandle about;
};

// The pixels of an inclusive rectangle of a window's image (image
// coordinates, row 0 at the bottom) changed behind the window's back: its
// display copy needs refreshing there.
class ImageRegionEvent : public QEvent {
public:
    ImageRegionEvent(ImageWindow* record, int32_t x0, int32_t y0, int32_t x1, int32_t y1)
        : QEvent(EventType()), record(record), x0(x0), y0(y0), x1(x1), y1(y1)
    {
    }

    static QEvent::Type EventType()
    {
        static const QEvent::Type type = static_cast<QEvent::Type>(QEvent::registerEventType());
        return type;
    }

    ImageWindow* record;
    int32_t x0, y0, x1, y1;
};

}  // namespace lv
