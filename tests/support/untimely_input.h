// Input that comes while the selection dialog is busy, and what must become of it: one table for the model of the
// windows and for both front ends. In each run part A is listed and its row selected, B is selected in the browser
// (A again, where a message is to tell that it is listed), the dialog is made busy, and two inputs come at once.
// Then what is still open is answered by Enter, last of all the dialog itself.
#pragma once

#include "platform/text.h"
#include "selection/partkeep_read_dlg.h"
#include "settings/process_values.h"
#include "tests/support/temporary_folder.h"

#include <string>
#include <utility>
#include <vector>

namespace partkeep {

enum class Busy { Load, Add, Click, Keypad, Message };
enum class Input {
    Enter,
    Escape,
    DoubleClickOnOk,
    Cancel,
    CloseBox,
    Add,
    Remove,
    LaserTool,
    Click,
    SelectAll,
    DeleteKey, // in the list's window, as the next one
    PutBack,
    DoubleClick, // on a part, where the browser is ours; so is what is dragged from there onto the list
    Drop
};

inline constexpr const char* busy_names[] = {"Load", "Add", "click", "keypad", "message"};
inline constexpr const char* input_names[] = {"Enter",  "Escape", "double click on OK", "Cancel", "close box",
                                              "Add",    "Remove", "LASER tool",         "click",  "Ctrl+A",
                                              "Delete", "Ctrl+Z", "double click",       "drop"};
[[nodiscard]] inline std::string UntimelyRow(Busy busy, Input first, Input second)
{
    return std::string(busy_names[static_cast<int>(busy)]) + ": " + input_names[static_cast<int>(first)] + ", " +
           input_names[static_cast<int>(second)];
}
inline constexpr int busy_count = 5;
inline constexpr int input_count = 14;

// Each of the later ones meets what can undo it, hide it or come before it.
[[nodiscard]] inline bool IsPlayed(Input first, Input second)
{
    const auto is_later = [](Input input) { return input >= Input::DeleteKey; };
    const auto meets = [](Input input) {
        return input == Input::Enter || input == Input::Escape || input == Input::Add || input == Input::Remove ||
               input == Input::Click;
    };
    if (is_later(first) && is_later(second)) {
        return first == second || (first == Input::DeleteKey && second == Input::PutBack);
    }
    if (first == Input::Drop && (second == Input::Remove || second == Input::Click)) {
        return false; // the toolkit may drop a click that waits while something is dropped
    }
    return (!is_later(first) || meets(second)) && (!is_later(second) || meets(first));
}

// A run on real windows, with its folders in this one, told as CUntimelyRun tells what must become of it.
[[nodiscard]] inline std::string PlayedOutcome(IDialogWindows& windows, const CTemporaryFolder& folder)
{
    const std::filesystem::path file = folder.Path("Install/ZanPartkeepConfig.xml");
    std::filesystem::remove(file);
    CPartkeepReadDlg dialog(windows);
    dialog.installFolder = folder.Core(u"Install");
    dialog.workingFolder = TheProcessValues().workingFolder;
    dialog.multiSelection = true;
    if (dialog.DoModal() != id_ok) {
        return "cancel";
    }
    std::string outcome = "ok ";
    for (const PartRecord& part : dialog.resultParts) {
        outcome += NarrowText(part.PartName);
    }
    const std::string options = ReadBytes(file);
    return outcome + " " + options.at(options.find("<FilterState>") + 13);
}

// Follows the dialog by letters of parts.
class CUntimelyRun {
public:
    // "cancel", or "ok", the parts that the host gets and the filter that is saved, such as "ok AB 0".
    static std::string Outcome(Busy busy, Input first, Input second) { return OutcomeOf(busy, {first, second}); }
    // What a double click or a drop asks for is posted, and may come behind input that waits already.
    static std::string LateOutcome(Busy busy, Input first, Input second)
    {
        const bool posted = first == Input::DoubleClick || first == Input::Drop;
        return OutcomeOf(busy, posted ? std::vector{second, Input::Add} : std::vector{first, second});
    }

private:
    static std::string OutcomeOf(Busy busy, const std::vector<Input>& inputs)
    {
        CUntimelyRun run(busy);
        for (const Input input : inputs) {
            run.Take(input);
        }
        if (run.over_ != Over::Nothing && run.over_ != Over::Closing) {
            run.Answer(true);
        }
        return run.end_.empty() ? run.Loaded() : run.end_;
    }

    enum class Over { Nothing, Keypad, Message, Closing }; // a window that closes takes what waits along

    explicit CUntimelyRun(Busy busy)
    {
        if (busy == Busy::Load) {
            end_ = Loaded();
        } else if (busy == Busy::Add) {
            Add();
        } else if (busy != Busy::Click) {
            over_ = busy == Busy::Keypad ? Over::Keypad : Over::Message;
        }
        selected_ = busy == Busy::Message ? "A" : selected_;
    }

    void Take(Input input)
    {
        const bool answer = input == Input::Enter || input == Input::Escape;
        if (!end_.empty() || over_ != Over::Nothing) {
            if (answer && end_.empty() && over_ != Over::Closing) {
                Answer(input == Input::Enter);
            }
            return;
        }
        if (input == Input::Enter || input == Input::DoubleClickOnOk) {
            end_ = Loaded();
        } else if (input == Input::Escape || input == Input::Cancel || input == Input::CloseBox) {
            end_ = "cancel";
        } else if (input == Input::Add || input == Input::DoubleClick || input == Input::Drop) {
            selected_.empty() ? void(over_ = Over::Message) : Add();
        } else if (input == Input::Remove || input == Input::DeleteKey) {
            removed_ = row_selected_;
            listed_.erase(0, row_selected_ ? 1 : 0);
            row_selected_ = false;
        } else if (input == Input::PutBack) {
            listed_ += std::exchange(removed_, false) ? "A" : "";
        } else if (input == Input::LaserTool) {
            filter_ = "2";
        } else if (input == Input::SelectAll) {
            selected_ = "ABC";
        }
    }
    void Answer(bool accept)
    {
        if (over_ == Over::Keypad && accept) {
            Add();
        }
        selected_.clear();
        over_ = Over::Closing;
    }
    void Add()
    {
        listed_ = Listed();
        selected_.clear();
    }
    [[nodiscard]] std::string Listed() const
    {
        std::string all = listed_;
        for (const char part : selected_) {
            all += all.find(part) == std::string::npos ? std::string(1, part) : "";
        }
        return all;
    }
    [[nodiscard]] std::string Loaded() const { return "ok " + Listed() + " " + filter_; }

    std::string listed_ = "A";
    std::string selected_ = "B";
    std::string filter_ = "0";
    bool row_selected_ = true;
    bool removed_ = false;
    Over over_ = Over::Nothing;
    std::string end_;
};

} // namespace partkeep
