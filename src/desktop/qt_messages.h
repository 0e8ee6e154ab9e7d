// Messages as boxes over a window. Where there is no screen they go to standard error.
#pragma once

#include "platform/messages.h"

#include <QPointer>
#include <QWidget>

namespace partkeep {

class CQtMessages : public IMessages {
public:
    // Null, or an owner that has gone: the window that is active then.
    explicit CQtMessages(QWidget* owner = nullptr) : owner_(owner) {}

    void SetOwner(QWidget* owner) { owner_ = owner; }
    void Show(const Message& message) override;

private:
    QPointer<QWidget> owner_;
};

// True where windows can be made: an application with a screen, asked from its own thread.
[[nodiscard]] bool HasScreen();

// Shows the ordinary pointer for a scope, over a wait cursor too: a window that waits for the user does not work.
class CArrowPointer {
public:
    CArrowPointer();
    ~CArrowPointer();
    CArrowPointer(const CArrowPointer&) = delete;
    CArrowPointer& operator=(const CArrowPointer&) = delete;

private:
    bool replaced_;
};

} // namespace partkeep
