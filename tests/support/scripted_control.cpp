#include "tests/support/scripted_control.h"

#include "platform/files.h"
#include "platform/text.h"

#include <algorithm>
#include <cstring>

namespace partkeep {

namespace {

using Arguments = ControlScript::Arguments;
using enum BrowserOperation;

constexpr std::int16_t control_true = -1;

std::u16string TextAt(Arguments in, std::size_t position)
{
    return std::u16string(std::get<std::u16string_view>(in[position].value));
}

std::int16_t Int16At(Arguments in, std::size_t position)
{
    return std::get<std::int16_t>(in[position].value);
}

template <typename T>
T* PointerAt(Arguments in, std::size_t position)
{
    return static_cast<T*>(std::get<void*>(in[position].value));
}

void PutNarrow(Arguments in, std::size_t position, const std::u16string& text)
{
    std::strcpy(PointerAt<char>(in, position), NarrowText(text).c_str());
}

template <typename T, typename V>
ControlResult Keep(T& place, V&& value)
{
    place = std::forward<V>(value);
    return control_true;
}

std::string ShownTable(const ServerTable& table)
{
    std::string shown;
    for (auto slot = table.slots.begin(); slot != table.slots.end() && slot->front() != '\0'; ++slot) {
        shown += (shown.empty() ? "'" : ", '") + std::string(slot->data()) + "'";
    }
    return shown;
}

// Empty for an argument that only receives.
std::string ShownArgument(BrowserOperation operation, Arguments in, std::size_t position)
{
    if (const auto* text = std::get_if<std::u16string_view>(&in[position].value)) {
        return Quoted(*text);
    }
    if (const auto* value = std::get_if<std::int16_t>(&in[position].value)) {
        return std::to_string(*value);
    }
    if (operation == SetServerList) {
        return ShownTable(*PointerAt<ServerTable>(in, position));
    }
    if (operation == ReadPartAttributes && position == 2) {
        return Quoted(PointerAt<char16_t>(in, position));
    }
    const bool tag = operation == ReadPartImage && position == 1;
    return tag ? "'" + std::string(PointerAt<char>(in, position)) + "'" : "";
}

std::string ShownCall(const OperationSignature& signature, Arguments in, ControlType result)
{
    std::string shown;
    for (std::size_t position = 0; position < in.size(); ++position) {
        const std::string argument = ShownArgument(signature.operation, in, position);
        shown += (shown.empty() || argument.empty() ? "" : ", ") + argument;
    }
    const bool as_agreed =
        result == signature.result && std::ranges::equal(in, signature.arguments, {}, &ControlArgument::type);
    return std::string(signature.name) + "(" + shown + ")" + (as_agreed ? "" : " bad types");
}

// A control that is no part browser: by number, with the text that a property is given.
std::string ShownForeignCall(std::int32_t dispatch_id, InvokeKind kind, Arguments in)
{
    const char* what = kind == InvokeKind::Method ? "method " : kind == InvokeKind::PropertyGet ? "get " : "put ";
    const bool text = kind == InvokeKind::PropertyPut && in.front().type == ControlType::Text;
    return what + std::to_string(dispatch_id) + (text ? " " + Quoted(TextAt(in, 0)) : "");
}

ControlResult NothingOf(ControlType type)
{
    if (type == ControlType::None || type == ControlType::Text) {
        return type == ControlType::None ? ControlResult() : std::u16string();
    }
    return type == ControlType::Int32 ? ControlResult(0)
                                      : static_cast<std::int16_t>(type == ControlType::Bool ? control_true : 0);
}

ControlResult SelectedPart(const ControlScript& script, Arguments in)
{
    const auto index = static_cast<std::size_t>(Int16At(in, 0));
    if (index >= script.selection.size()) {
        return std::int32_t{0};
    }
    const ScriptedPart& part = script.selection[index];
    PutNarrow(in, 1, part.server);
    PutNarrow(in, 2, part.folder);
    PutNarrow(in, 3, part.name);
    return std::int32_t{1};
}

ControlResult PartAttributes(const ControlScript& script, Arguments in)
{
    const auto part = std::ranges::find(script.selection, PointerAt<char16_t>(in, 2), &ScriptedPart::name);
    if (part == script.selection.end() || !part->readable) {
        return std::int16_t{0};
    }
    PutNarrow(in, 6, part->material);
    PutNarrow(in, 8, part->machine);
    PutNarrow(in, 11, part->comment);
    return Keep(*PointerAt<std::int32_t>(in, 3), part->thickness);
}

ControlResult PartImage(const ControlScript& script, Arguments in)
{
    char* block = PointerAt<char>(in, 1);
    const auto image = script.images.find(block);
    if (image == script.images.end()) {
        return std::int16_t{0};
    }
    std::copy_n(image->second.begin(), std::min(image->second.size(), image_block_bytes), block);
    return control_true;
}

ControlResult PartFiles(const ControlScript& script, Arguments in)
{
    const std::u16string path = TextAt(in, 1);
    const auto extensions = script.filesByKind.find(script.dataKind);
    if (extensions == script.filesByKind.end()) {
        return std::int16_t{0};
    }
    for (const std::u16string& extension : extensions->second) {
        ReplaceTextFile(script.targetFolder + path.substr(path.rfind(path_separator) + 1) + extension,
                        std::to_string(script.dataKind));
    }
    return control_true;
}

class CScriptedControl : public IHostedControl {
public:
    explicit CScriptedControl(ControlScript& script) : script_(script) { ++script_.controls; }
    ~CScriptedControl() override
    {
        script_.sink = nullptr;
        --script_.controls;
    }

    ControlResult Invoke(std::int32_t dispatch_id, InvokeKind kind, Arguments in, ControlType result) override
    {
        const auto* signature = kind == InvokeKind::Method ? FindBrowserSignature(dispatch_id) : nullptr;
        if (signature == nullptr) {
            script_.recorder.Note(ShownForeignCall(dispatch_id, kind, in));
            return NothingOf(result);
        }
        script_.recorder.Note(ShownCall(*signature, in, result));
        if (script_.onCall) {
            script_.onCall();
        }
        const auto answer = script_.answers.find(signature->operation);
        return answer != script_.answers.end() ? answer->second(in) : NothingOf(result);
    }
    void SetEventSink(std::function<void(std::int32_t)> sink) override { script_.sink = std::move(sink); }

private:
    ControlScript& script_;
};

} // namespace

ControlScript::ControlScript(Recorder& recorder_to_use) : recorder(recorder_to_use)
{
    On(SetTargetFolder, [this](Arguments in) { return Keep(targetFolder, TextAt(in, 0)); });
    On(GetPreviewFileTitle, [this](Arguments) { return ControlResult(previewTitle); });
    On(SetDataKind, [this](Arguments in) { return Keep(dataKind, Int16At(in, 0)); });
    On(GetCurrentServer, [this](Arguments) { return ControlResult(currentServer); });
    On(SetCurrentServer, [this](Arguments in) { return Keep(currentServer, TextAt(in, 0)); });
    On(SetCurrentFolder, [this](Arguments in) { return Keep(currentFolder, TextAt(in, 0)); });
    On(GetCurrentFolder, [this](Arguments) { return ControlResult(currentFolder); });
    On(GetServerList, [this](Arguments in) { return Keep(*PointerAt<ServerTable>(in, 0), servers); });
    On(SetServerList, [this](Arguments in) { return Keep(servers, *PointerAt<ServerTable>(in, 0)); });
    On(GetViewStateCount, [this](Arguments) { return ControlResult(static_cast<std::int16_t>(viewState.size())); });
    On(GetViewState, [this](Arguments in) {
        std::ranges::copy(viewState, PointerAt<std::int16_t>(in, 0));
        return ControlResult(control_true);
    });
    On(SetViewState, [this](Arguments in) {
        const auto* values = PointerAt<std::int16_t>(in, 0);
        return Keep(givenViewState, std::vector(values, values + max_view_state_values));
    });
    On(ReadPartImage, [this](Arguments in) { return PartImage(*this, in); });
    On(CopyPartFiles, [this](Arguments in) { return PartFiles(*this, in); });
    On(ReadPartAttributes, [this](Arguments in) { return PartAttributes(*this, in); });
    On(GetSelectedPartCount, [this](Arguments) { return ControlResult(static_cast<std::int32_t>(selection.size())); });
    On(GetSelectedPart, [this](Arguments in) { return SelectedPart(*this, in); });
    On(SelectAllParts, [this](Arguments in) {
        selection = Int16At(in, 0) != 0 ? list : std::vector<ScriptedPart>();
        return ControlResult(std::int16_t{0});
    });
}

std::unique_ptr<IHostedControl> ControlScript::MakeControl()
{
    return std::make_unique<CScriptedControl>(*this);
}

} // namespace partkeep
