#include "partlibrary/session/session_control.h"

#include "partlibrary/library/library_text.h"

#include <algorithm>
#include <string_view>

namespace partkeep {

namespace {

constexpr std::int16_t automation_true = -1;

using Arguments = std::span<const ControlArgument>;

ControlResult FromBool(bool value)
{
    return value ? automation_true : std::int16_t{0};
}

std::u16string_view TextAt(Arguments arguments, std::size_t index)
{
    const auto* text = std::get_if<std::u16string_view>(&arguments[index].value);
    return text != nullptr ? *text : std::u16string_view{};
}

std::int16_t Int16At(Arguments arguments, std::size_t index)
{
    const auto* value = std::get_if<std::int16_t>(&arguments[index].value);
    return value != nullptr ? *value : std::int16_t{0};
}

// Null when the caller passed none.
template <typename T>
T* PointerAt(Arguments arguments, std::size_t index)
{
    void* const* pointer = std::get_if<void*>(&arguments[index].value);
    return pointer != nullptr ? static_cast<T*>(*pointer) : nullptr;
}

void WriteText(Arguments arguments, std::size_t index, const QString& text, std::size_t bytes)
{
    if (char* buffer = PointerAt<char>(arguments, index); buffer != nullptr) {
        CopyNarrow(text, {buffer, bytes});
    }
}

template <typename T>
void WriteValue(Arguments arguments, std::size_t index, T value)
{
    if (T* target = PointerAt<T>(arguments, index); target != nullptr) {
        *target = value;
    }
}

bool HoldsValue(const ControlArgument& argument)
{
    switch (argument.type) {
    case ControlType::Text:
        return std::holds_alternative<std::u16string_view>(argument.value);
    case ControlType::Int16:
        return std::holds_alternative<std::int16_t>(argument.value);
    default:
        return std::holds_alternative<void*>(argument.value);
    }
}

bool Matches(const OperationSignature& signature, Arguments arguments)
{
    return std::equal(signature.arguments.begin(), signature.arguments.end(), arguments.begin(), arguments.end(),
                      [](ControlType type, const ControlArgument& argument) {
                          return type == argument.type && HoldsValue(argument);
                      });
}

// Positions of ReadPartAttributes' outputs, from 0. What the component never reads is cleared.
ControlResult ReadAttributes(CBrowserSession& session, Arguments arguments)
{
    const auto part = session.ReadPartAttributes(TextAt(arguments, 0), TextAt(arguments, 1));
    if (!part) {
        return FromBool(false);
    }
    WriteValue<std::int32_t>(arguments, 3, part->thickness);
    WriteText(arguments, 6, part->material, long_text_bytes);
    WriteText(arguments, 8, part->machine, long_text_bytes);
    WriteText(arguments, 11, part->comment, long_text_bytes);
    WriteText(arguments, 7, {}, long_text_bytes);
    for (const std::size_t position : {4U, 9U, 10U}) {
        WriteValue<std::int32_t>(arguments, position, 0);
    }
    for (const std::size_t position : {5U, 12U, 13U}) {
        WriteValue<std::int16_t>(arguments, position, 0);
    }
    return FromBool(true);
}

ControlResult GetSelected(CBrowserSession& session, Arguments arguments)
{
    const auto part = session.GetSelectedPart(Int16At(arguments, 0));
    if (!part) {
        return std::int32_t{0};
    }
    WriteText(arguments, 1, part->server, short_text_bytes);
    WriteText(arguments, 2, part->folder, short_text_bytes);
    WriteText(arguments, 3, part->name, short_text_bytes);
    return std::int32_t{1};
}

ControlResult ReadImage(CBrowserSession& session, Arguments arguments)
{
    char* image = PointerAt<char>(arguments, 1);
    return FromBool(image != nullptr &&
                    session.ReadPartImage(std::span<char, image_block_bytes>(image, image_block_bytes)));
}

ControlResult ExchangeServers(CBrowserSession& session, Arguments arguments, bool get)
{
    auto* table = PointerAt<ServerTable>(arguments, 0);
    if (table == nullptr) {
        return FromBool(false);
    }
    return FromBool(get ? session.GetServerList(*table) : session.SetServerList(*table));
}

ControlResult ExchangeViewState(CBrowserSession& session, Arguments arguments, bool get)
{
    auto* values = PointerAt<std::int16_t>(arguments, 0);
    if (values == nullptr) {
        return FromBool(false);
    }
    if (get) {
        return FromBool(session.GetViewState(std::span<std::int16_t, view_state_values>(values, view_state_values)));
    }
    session.SetViewState(std::span<const std::int16_t, view_state_values>(values, view_state_values));
    return {};
}

// Operations on one text.
ControlResult DispatchText(CBrowserSession& session, BrowserOperation operation, Arguments arguments)
{
    const std::u16string_view text = TextAt(arguments, 0);
    switch (operation) {
    case BrowserOperation::ConnectServer:
        return FromBool(session.ConnectServer(text));
    case BrowserOperation::SetTargetFolder:
        return FromBool(session.SetTargetFolder(text));
    case BrowserOperation::SetCurrentFolder:
        return FromBool(session.SetCurrentFolder(text));
    case BrowserOperation::SetCurrentServer:
        session.SetCurrentServer(text);
        return {};
    case BrowserOperation::CopyPartFiles:
        return FromBool(session.CopyPartFiles(text, TextAt(arguments, 1)));
    case BrowserOperation::ReadPartAttributes:
        return ReadAttributes(session, arguments);
    default:
        return ReadImage(session, arguments);
    }
}

// Operations on one 16-bit number.
ControlResult DispatchNumber(CBrowserSession& session, BrowserOperation operation, Arguments arguments)
{
    const std::int16_t number = Int16At(arguments, 0);
    switch (operation) {
    case BrowserOperation::SetDataKind:
        return FromBool(session.SetDataKind(number));
    case BrowserOperation::SetDisplayUnit:
        session.SetDisplayUnit(number);
        return {};
    case BrowserOperation::SetPartFilter:
        return FromBool(session.SetPartFilter(number));
    case BrowserOperation::MoveFocus:
        return session.MoveFocus(number);
    case BrowserOperation::SelectAllParts:
        return session.SelectAllParts(number);
    default:
        return GetSelected(session, arguments);
    }
}

ControlResult DispatchBlock(CBrowserSession& session, BrowserOperation operation, Arguments arguments)
{
    switch (operation) {
    case BrowserOperation::GetServerList:
    case BrowserOperation::SetServerList:
        return ExchangeServers(session, arguments, operation == BrowserOperation::GetServerList);
    default:
        return ExchangeViewState(session, arguments, operation == BrowserOperation::GetViewState);
    }
}

ControlResult DispatchPlain(CBrowserSession& session, BrowserOperation operation)
{
    switch (operation) {
    case BrowserOperation::DisconnectServer:
        session.DisconnectServer();
        return {};
    case BrowserOperation::SelectNextServer:
        session.SelectNextServer();
        return {};
    case BrowserOperation::OpenFolderSelection:
        session.OpenFolderSelection();
        return {};
    case BrowserOperation::GetPreviewFileTitle:
        return session.GetPreviewFileTitle();
    case BrowserOperation::GetLastStatus:
        return session.GetLastStatus();
    case BrowserOperation::GetCurrentServer:
        return session.GetCurrentServer();
    case BrowserOperation::GetCurrentFolder:
        return session.GetCurrentFolder();
    case BrowserOperation::RefreshPartList:
        return FromBool(session.RefreshPartList());
    case BrowserOperation::GetViewStateCount:
        return session.GetViewStateCount();
    default:
        return session.GetSelectedPartCount();
    }
}

ControlResult Dispatch(CBrowserSession& session, const OperationSignature& signature, Arguments arguments)
{
    if (arguments.empty()) {
        return DispatchPlain(session, signature.operation);
    }
    switch (signature.arguments.front()) {
    case ControlType::Text:
        return DispatchText(session, signature.operation, arguments);
    case ControlType::Int16:
        return DispatchNumber(session, signature.operation, arguments);
    default:
        return DispatchBlock(session, signature.operation, arguments);
    }
}

} // namespace

CSessionControl::CSessionControl(std::shared_ptr<CBrowserSession> session) : session_(std::move(session))
{
    session_->SetClickSink([this] { OnClick(); });
}

CSessionControl::~CSessionControl()
{
    session_->SetClickSink({});
}

ControlResult CSessionControl::Invoke(std::int32_t dispatch_id, InvokeKind kind,
                                      std::span<const ControlArgument> arguments, ControlType result)
{
    const OperationSignature* signature = FindBrowserSignature(dispatch_id);
    if (signature == nullptr || kind != InvokeKind::Method || result != signature->result ||
        !Matches(*signature, arguments)) {
        return {};
    }
    ++calls_;
    ControlResult answer;
    try {
        answer = Dispatch(*session_, *signature, arguments);
    } catch (...) {
        answer = {}; // no result: the caller reads false, 0 or empty text
    }
    --calls_;
    return answer;
}

void CSessionControl::SetEventSink(std::function<void(std::int32_t)> sink)
{
    sink_ = std::move(sink);
}

// The caller hears of what the user does, never of what it does itself.
void CSessionControl::OnClick()
{
    if (sink_ && calls_ == 0) {
        sink_(static_cast<std::int32_t>(BrowserEvent::Click));
    }
}

std::unique_ptr<IHostedControl> CPartBrowserControls::CreateHidden(const ClassId& class_id, std::int32_t /*control_id*/,
                                                                   int /*width*/, int /*height*/)
{
    if (class_id != part_browser_class_id) {
        return nullptr;
    }
    return std::make_unique<CSessionControl>(std::make_shared<CBrowserSession>(folder_));
}

} // namespace partkeep
