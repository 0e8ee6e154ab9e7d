// What a control asks of the dialog around it. It is posted, so that it comes when whatever is under way has ended, and
// a dialog that has gone by then is asked nothing.
#pragma once

#include <QCoreApplication>
#include <QEvent>

namespace partkeep {

// What a drag of parts holds; they are taken by Add, so it says no more than that there are some.
inline constexpr const char* dragged_parts_type = "application/x-partkeep-parts";

enum class DialogRequest { Add, Choose }; // Choose: what a double click on a part means in this run

class CDialogRequestEvent : public QEvent {
public:
    explicit CDialogRequestEvent(DialogRequest request) : QEvent(EventType()), request_(request) {}

    [[nodiscard]] DialogRequest Request() const { return request_; }

    [[nodiscard]] static QEvent::Type EventType()
    {
        static const int type = QEvent::registerEventType();
        return static_cast<QEvent::Type>(type);
    }

private:
    DialogRequest request_;
};

inline void PostDialogRequest(QObject& dialog, DialogRequest request)
{
    QCoreApplication::postEvent(&dialog, new CDialogRequestEvent(request)); // the queue owns it
}

} // namespace partkeep
