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
    if (const auto* value = std::get_if<std::int32_t>(&argument.value)) {
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

std::string ShownCall(const OperationSignature& signature, InvokeKind kind, Arguments arguments, ControlType result)
{
    std::vector<ControlType> types;
    std::string shown;
    for (std::size_t position = 0; position < arguments.size(); ++position) {
        types.push_back(arguments[position].type);
        const std::string argument = ShownArgument(signature.operation, arguments, position);
        shown += (shown.empty() || argument.empty() ? "" : ", ") + argument;
    }
    const bool as_agreed =
        kind == InvokeKind::Method && result == signature.result &&
        std::equal(types.begin(), types.end(), signature.arguments.begin(), signature.arguments.end());
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
    switch (type) {
    case ControlType::Int16:
        return std::int16_t{0};
    case ControlType::Int32:
        return std::int32_t{0};
    case ControlType::Bool:
        return control_true;
    case ControlType::Text:
        return std::u16string();
    default:
        return {};
    }
}

ControlResult GetSelectedPart(const ControlScript& script, Arguments arguments)
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

ControlResult ReadPartAttributes(const ControlScript& script, Arguments arguments)
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

ControlResult ReadPartImage(const ControlScript& script, Arguments arguments)
{
    char* block = PointerAt<char>(arguments, 1);
    const auto image = script.images.find(block);
    if (image == script.images.end()) {
        return std::int16_t{0};
    }
    std::copy_n(image->second.begin(), std::min(image->second.size(), image_block_bytes), block);
    return control_true;
}

ControlResult CopyPartFiles(const ControlScript& script, Arguments arguments)
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

ControlResult Play(ControlScript& script, BrowserOperation operation, Arguments arguments, ControlType result)
{
    switch (operation) {
    case BrowserOperation::SetTargetFolder:
        script.targetFolder = TextAt(arguments, 0);
        break;
    case BrowserOperation::GetPreviewFileTitle:
        return script.previewTitle;
    case BrowserOperation::SetDataKind:
        script.dataKind = Int16At(arguments, 0);
        break;
    case BrowserOperation::GetCurrentServer:
        return script.currentServer;
    case BrowserOperation::SetCurrentServer:
        script.currentServer = TextAt(arguments, 0);
        break;
    case BrowserOperation::SetCurrentFolder:
        script.currentFolder = TextAt(arguments, 0);
        break;
    case BrowserOperation::GetCurrentFolder:
        return script.currentFolder;
    case BrowserOperation::GetServerList:
        *PointerAt<ServerTable>(arguments, 0) = script.servers;
        break;
    case BrowserOperation::SetServerList:
        script.servers = *PointerAt<ServerTable>(arguments, 0);
        break;
    case BrowserOperation::GetViewState:
        std::copy(script.viewState.begin(), script.viewState.end(), PointerAt<std::int16_t>(arguments, 0));
        break;
    case BrowserOperation::GetViewStateCount:
        return static_cast<std::int16_t>(script.viewState.size());
    case BrowserOperation::SetViewState: {
        const auto* values = PointerAt<std::int16_t>(arguments, 0);
        script.givenViewState.assign(values, values + max_view_state_values);
        break;
    }
    case BrowserOperation::ReadPartImage:
        return ReadPartImage(script, arguments);
    case BrowserOperation::CopyPartFiles:
        return CopyPartFiles(script, arguments);
    case BrowserOperation::ReadPartAttributes:
        return ReadPartAttributes(script, arguments);
    case BrowserOperation::GetSelectedPartCount:
        return static_cast<std::int32_t>(script.selection.size());
    case BrowserOperation::GetSelectedPart:
        return GetSelectedPart(script, arguments);
    case BrowserOperation::SelectAllParts:
        script.selection = Int16At(arguments, 0) != 0 ? script.list : std::vector<ScriptedPart>();
        break;
    default:
        break;
    }
    return NothingOf(result);
}

} // namespace

std::unique_ptr<IHostedControl> ControlScript::MakeControl()
{
    return std::make_unique<CScriptedControl>(*this);
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
    script_.recorder.Note(known ? ShownCall(*signature, kind, arguments, result)
                                : ShownForeignCall(dispatch_id, kind, arguments));
    if (const auto answer = script_.answers.find(dispatch_id); answer != script_.answers.end()) {
        return answer->second(arguments);
    }
    return known ? Play(script_, signature->operation, arguments, result) : NothingOf(result);
}

} // namespace partkeep
