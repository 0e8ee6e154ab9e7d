// A hosted control that plays the part browser from a script and notes each call as one line, such as
// "CopyPartFiles('SRV1', 'Plates\P1')". Only what a call puts in is shown, not the places for its outputs; a
// call whose argument types are not the contract's is noted with " bad types". The test owns the script, which
// outlives the controls made from it.
#pragma once

#include "controls/part_browser_contract.h"
#include "tests/support/recorder.h"

#include <algorithm>
#include <map>

namespace partkeep {

// The contract as values, for tests that go over all its operations.
struct OperationSignature {
    BrowserOperation operation;
    const char* name;
    ControlType result;
    std::span<const ControlType> arguments;
};

inline constexpr auto browser_signatures = std::apply(
    [](auto... row) {
        return std::array{OperationSignature{BrowserOperation{row.id}, row.name, row.result, row.arguments}...};
    },
    browser::contract);

// Null for an id that is not in the contract.
inline const OperationSignature* FindBrowserSignature(std::int32_t dispatch_id)
{
    const auto* found =
        std::ranges::find(browser_signatures, BrowserOperation{dispatch_id}, &OperationSignature::operation);
    return found != browser_signatures.end() ? found : nullptr;
}

struct ScriptedPart {
    std::u16string name{};
    std::u16string server{}; // as the entry reports it
    std::u16string folder{};
    std::int32_t thickness = 0;
    std::u16string material{};
    std::u16string machine{};
    std::u16string comment{};
    bool readable = true; // false: ReadPartAttributes fails
};

struct ControlScript {
    using Arguments = std::span<const ControlArgument>;
    using Answer = std::function<ControlResult(Arguments)>;

    explicit ControlScript(Recorder& recorder_to_use);
    ControlScript(const ControlScript&) = delete;
    ControlScript& operator=(const ControlScript&) = delete;

    [[nodiscard]] std::unique_ptr<IHostedControl> MakeControl();
    void FireClick() const { Fire(BrowserEvent::Click); }
    void Fire(BrowserEvent event) const { sink ? sink(static_cast<std::int32_t>(event)) : void(); }

    // Replaces what an operation does and answers; the call is noted all the same. A bool is true as int16_t -1.
    void On(BrowserOperation operation, Answer answer) { answers[operation] = std::move(answer); }
    void On(BrowserOperation operation, ControlResult result)
    {
        On(operation, [result](auto) { return result; });
    }

    Recorder& recorder;
    std::map<BrowserOperation, Answer> answers; // to begin with, the browser's own
    std::function<void()> onCall;               // from inside each call, before it does anything
    std::function<void(std::int32_t)> sink;
    int controls = 0; // alive now

    // What the browser shows and holds. Operations that are not scripted work on this, succeed where they can
    // and answer 0 or empty text otherwise.
    std::vector<ScriptedPart> list; // SelectAllParts(1) selects these
    std::vector<ScriptedPart> selection;
    std::u16string currentServer;
    std::u16string currentFolder;
    std::u16string targetFolder;
    std::u16string previewTitle;
    std::int16_t dataKind = 0;
    ServerTable servers;
    std::vector<std::int16_t> viewState;
    std::vector<std::int16_t> givenViewState;  // all that SetViewState may read
    std::map<std::string, std::string> images; // by tag
    // Extensions with their dot by kind: CopyPartFiles puts such files, holding the kind, into the target folder.
    std::map<std::int16_t, std::vector<std::u16string>> filesByKind;
};

} // namespace partkeep
