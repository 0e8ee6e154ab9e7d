#include "tests/support/scripted_control.h"

#include "platform/files.h"
#include "platform/text.h"

#include <algorithm>
#include <cstring>

namespace partkeep {

namespace {

using Arguments = ControlScript::Arguments;

constexpr std::int16_t control_true = -1;

std::u16string TextAt(Arguments arguments, std::size_t position)
{
    return std::u16string(std::get<std::u16string_view>(arguments[position].value));
}

std::int16_t Int16At(Arguments arguments, std::size_t position)
{
    return std::get<std::int16_t>(arguments[position].value);
}

template <typename T>
T* PointerAt(Arguments arguments, std::size_t position)
{
    return static_cast<T*>(std::get<void*>(arguments[position].value));
}

void PutNarrow(Arguments arguments, std::size_t position, const std::u16string& text)
{
    const std::string narrow = NarrowText(text);
    std::memcpy(PointerAt<char>(arguments, position), narrow.c_str(), narrow.size() + 1);
}

std::string ShownTable(const ServerTable& table)
{
    std::string shown;
    for (const auto& slot : table.slots) {
        if (slot.front() == '\0') {
            break;
        }
        shown += (shown.empty() ? "'" : ", '") + std::string(slot.data()) + "'";
    }
    return shown;
}

// Empty for an argument that only receives.
std::string ShownArgument(BrowserOperation operation, Arguments arguments, std::size_t position)
{
    const ControlArgument& argument = arguments[position];
    if (const auto* text = std::get_if<std::u16string_view>(&argument.value)) {
        return Quoted(*text);
    }
    if (const auto* value = std::get_if<std::int16_t>(&argument.value)) {
        return std::to_string(*value);
    }
    if (operation == BrowserOperation::SetServerList) {
        return ShownTable(*PointerAt<ServerTable>(arguments, position));
    }
    if (operation == BrowserOperation::ReadPartAttributes && position == 2) {
        return Quoted(PointerAt<char16_t>(arguments, position));
    }
    if (operation == BrowserOperation::ReadPartImage && position == 1) {
        return "'" + std::string(PointerAt<char>(arguments, position)) + "'";
    }
    return {};
}

std::string ShownCall(const OperationSignature& signature, Arguments arguments, ControlType result)
{
    std::string shown;
    for (std::size_t position = 0; position < arguments.size(); ++position) {
        const std::string argument = ShownArgument(signature.operation, arguments, position);
        shown += (shown.empty() || argument.empty() ? "" : ", ") + argument;
    }
    const bool as_agreed =
        result == signature.result &&
        std::equal(arguments.begin(), arguments.end(), signature.arguments.begin(), signature.arguments.end(),
                   [](auto& given, auto type) { return given.type == type; });
    return std::string(signature.name) + "(" + shown + ")" + (as_agreed ? "" : " bad types");
}

// A control that is no part browser: by number, with the text that a property is given.
std::string ShownForeignCall(std::int32_t dispatch_id, InvokeKind kind, Arguments arguments)
{
    const char* what = kind == InvokeKind::Method ? "method " : kind == InvokeKind::PropertyGet ? "get " : "put ";
    const bool text = kind == InvokeKind::PropertyPut && arguments.front().type == ControlType::Text;
    return what + std::to_string(dispatch_id) + (text ? " " + Quoted(TextAt(arguments, 0)) : "");
}

ControlResult NothingOf(ControlType type)
{
    static const std::map<ControlType, ControlResult> results{{ControlType::Int16, std::int16_t{0}},
                                                              {ControlType::Int32, std::int32_t{0}},
                                                              {ControlType::Bool, control_true},
                                                              {ControlType::Text, std::u16string()}};
    const auto result = results.find(type);
    return result != results.end() ? result->second : ControlResult();
}

ControlResult SelectedPart(const ControlScript& script, Arguments arguments)
{
    const auto index = static_cast<std::size_t>(Int16At(arguments, 0));
    if (index >= script.selection.size()) {
        return std::int32_t{0};
    }
    const ScriptedPart& part = script.selection[index];
    PutNarrow(arguments, 1, part.server);
    PutNarrow(arguments, 2, part.folder);
    PutNarrow(arguments, 3, part.name);
    return std::int32_t{1};
}

ControlResult PartAttributes(const ControlScript& script, Arguments arguments)
{
    const std::u16string name = PointerAt<char16_t>(arguments, 2);
    const auto part = std::find_if(script.selection.begin(), script.selection.end(),
                                   [&name](const ScriptedPart& candidate) { return candidate.name == name; });
    if (part == script.selection.end() || !part->readable) {
        return std::int16_t{0};
    }
    *PointerAt<std::int32_t>(arguments, 3) = part->thickness;
    PutNarrow(arguments, 6, part->material);
    PutNarrow(arguments, 8, part->machine);
    PutNarrow(arguments, 11, part->comment);
    return control_true;
}

ControlResult PartImage(const ControlScript& script, Arguments arguments)
{
    char* block = PointerAt<char>(arguments, 1);
    const auto image = script.images.find(block);
    if (image == script.images.end()) {
        return std::int16_t{0};
    }
    std::copy_n(image->second.begin(), std::min(image->second.size(), image_block_bytes), block);
    return control_true;
}

ControlResult PartFiles(const ControlScript& script, Arguments arguments)
{
    const std::u16string path = TextAt(arguments, 1);
    const std::u16string stem = script.targetFolder + path.substr(path.rfind(path_separator) + 1);
    const auto extensions = script.filesByKind.find(script.dataKind);
    if (extensions == script.filesByKind.end()) {
        return std::int16_t{0};
    }
    for (const std::u16string& extension : extensions->second) {
        ReplaceTextFile(stem + extension, std::to_string(script.dataKind));
    }
    return control_true;
}

template <typename T, typename V>
ControlResult Keep(T& place, V&& value)
{
    place = std::forward<V>(value);
    return control_true;
}

} // namespace

ControlScript::ControlScript(Recorder& recorder_to_use) : recorder(recorder_to_use)
{
    using enum BrowserOperation;
    const auto play = [this](BrowserOperation operation, Answer answer) {
        plays[static_cast<std::int32_t>(operation)] = std::move(answer);
    };
    play(SetTargetFolder, [this](Arguments in) { return Keep(targetFolder, TextAt(in, 0)); });
    play(GetPreviewFileTitle, [this](Arguments) { return ControlResult(previewTitle); });
    play(SetDataKind, [this](Arguments in) { return Keep(dataKind, Int16At(in, 0)); });
    play(GetCurrentServer, [this](Arguments) { return ControlResult(currentServer); });
    play(SetCurrentServer, [this](Arguments in) { return Keep(currentServer, TextAt(in, 0)); });
    play(SetCurrentFolder, [this](Arguments in) { return Keep(currentFolder, TextAt(in, 0)); });
    play(GetCurrentFolder, [this](Arguments) { return ControlResult(currentFolder); });
    play(GetServerList, [this](Arguments in) { return Keep(*PointerAt<ServerTable>(in, 0), servers); });
    play(SetServerList, [this](Arguments in) { return Keep(servers, *PointerAt<ServerTable>(in, 0)); });
    play(GetViewStateCount, [this](Arguments) { return ControlResult(static_cast<std::int16_t>(viewState.size())); });
    play(GetViewState, [this](Arguments in) {
        std::copy(viewState.begin(), viewState.end(), PointerAt<std::int16_t>(in, 0));
        return ControlResult(control_true);
    });
    play(SetViewState, [this](Arguments in) {
        const auto* values = PointerAt<std::int16_t>(in, 0);
        return Keep(givenViewState, std::vector(values, values + max_view_state_values));
    });
    play(ReadPartImage, [this](Arguments in) { return PartImage(*this, in); });
    play(CopyPartFiles, [this](Arguments in) { return PartFiles(*this, in); });
    play(ReadPartAttributes, [this](Arguments in) { return PartAttributes(*this, in); });
    play(GetSelectedPartCount,
         [this](Arguments) { return ControlResult(static_cast<std::int32_t>(selection.size())); });
    play(GetSelectedPart, [this](Arguments in) { return SelectedPart(*this, in); });
    play(SelectAllParts, [this](Arguments in) {
        selection = Int16At(in, 0) != 0 ? list : std::vector<ScriptedPart>();
        return ControlResult(std::int16_t{0});
    });
}

void ControlScript::Fire(BrowserEvent event) const
{
    if (sink) {
        sink(static_cast<std::int32_t>(event));
    }
}

CScriptedControl::~CScriptedControl()
{
    script_.sink = nullptr;
    --script_.controls;
}

ControlResult CScriptedControl::Invoke(std::int32_t dispatch_id, InvokeKind kind, Arguments arguments,
                                       ControlType result)
{
    const OperationSignature* signature = FindBrowserSignature(dispatch_id);
    const bool known = signature != nullptr && kind == InvokeKind::Method;
    script_.recorder.Note(known ? ShownCall(*signature, arguments, result)
                                : ShownForeignCall(dispatch_id, kind, arguments));
    const auto& scripted = script_.answers.contains(dispatch_id) ? script_.answers : script_.plays;
    const auto answer = scripted.find(dispatch_id);
    return known && answer != scripted.end() ? answer->second(arguments) : NothingOf(result);
}

} // namespace partkeep
