// One modal message to the user with an OK button. An object of this kind is bound to its owner window when
// it is made, so that whoever shows a message need not know a window.
#pragma once

#include <string>

namespace partkeep {

enum class MessageKind {
    Plain,       // task-modal, no icon
    Exclamation, // the exclamation icon
};

struct Message {
    std::u16string text;
    std::u16string title;
    MessageKind kind = MessageKind::Plain;
};

class IMessages {
public:
    virtual ~IMessages() = default;

    // Returns when the user has answered; input that waits by then is thrown away. Where there is no screen the text
    // goes to standard error and counts as answered.
    virtual void Show(const Message& message) = 0;
};

} // namespace partkeep
