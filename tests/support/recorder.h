// One sequence of everything that a test wants to see in order: calls to controls and windows, messages, files.
#pragma once

#include "platform/messages.h"
#include "platform/text.h"

#include <algorithm>
#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace partkeep {

using Lines = std::vector<std::string>;

// "first; second" as two lines; a separator at the end ends the second.
[[nodiscard]] inline Lines Steps(const std::string& text)
{
    Lines steps;
    for (std::size_t at = 0, end = 0; at < text.size(); at = end + 2) {
        end = std::min(text.find("; ", at), text.size());
        steps.push_back(text.substr(at, end - at));
    }
    return steps;
}

struct Recorder {
    Lines lines;

    void Note(std::string line) { lines.push_back(std::move(line)); }

    // What was noted since the last call.
    [[nodiscard]] Lines Take() { return std::exchange(lines, {}); }
};

// Wide text between single quotes, as UTF-8.
[[nodiscard]] inline std::string Quoted(std::u16string_view text)
{
    return "'" + NarrowText(text, utf8_code_page) + "'";
}

// Notes each message as "message 'text' 'title'", with " exclamation" behind it where it has the icon.
class CRecordingMessages : public IMessages {
public:
    explicit CRecordingMessages(Recorder& recorder) : recorder_(recorder) {}
    void Show(const Message& message) override
    {
        const char* icon = message.kind == MessageKind::Exclamation ? " exclamation" : "";
        recorder_.Note("message " + Quoted(message.text) + " " + Quoted(message.title) + icon);
        if (whileOpen) {
            whileOpen();
        }
    }

    std::function<void()> whileOpen;

private:
    Recorder& recorder_;
};

} // namespace partkeep
