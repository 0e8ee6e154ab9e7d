#include "desktop/qt_input.h"

#include <QGuiApplication>
#include <QObject>

namespace partkeep {

namespace {

class CInputSink : public QObject {
public:
    bool eventFilter(QObject*, QEvent* event) override { return event->spontaneous() && IsInput(event->type()); }
};

} // namespace

bool IsInput(QEvent::Type type)
{
    switch (type) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonRelease:
    case QEvent::MouseButtonDblClick:
    case QEvent::Wheel:
    case QEvent::KeyPress:
    case QEvent::KeyRelease:
    case QEvent::Shortcut:
    case QEvent::ShortcutOverride:
    case QEvent::ContextMenu:
    case QEvent::TouchBegin:
    case QEvent::TouchUpdate:
    case QEvent::TouchEnd:
    case QEvent::InputMethod:
    case QEvent::Drop:
    case QEvent::Close:
        return true;
    default:
        return false;
    }
}

void DropWaitingInput()
{
    CInputSink sink;
    qApp->installEventFilter(&sink);
    QGuiApplication::sync(); // what the display server has is read, and goes into the sink
}

} // namespace partkeep
