// One sequence of everything that a test wants to see in order: calls to controls and windows, messages, files.
#pragma once

#include "platform/messages.h"

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace partkeep {

struct Recorder {
    std::vector<std::string> lines;

    void Note(std::string line) { lines.push_back(std::move(line)); }

    // What was noted since the last call.
    [[nodiscard]] std::vector<std::string> Take() { return std::exchange(lines, {}); }
};

// Wide text between single quotes, as UTF-8.
[[nodiscard]] std::string Quoted(std::u16string_view text);

// Notes each message as "message 'text' 'title'", with " exclamation" behind it where it has the icon.
class CRecordingMessages : public IMessages {
public:
    explicit CRecordingMessages(Recorder& recorder) : recorder_(recorder) {}
    void Show(const Message& message) override;

private:
    Recorder& recorder_;
};

} // namespace partkeep
