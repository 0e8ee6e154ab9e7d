#include "partlibrary/session/session_control.h"

#include "partlibrary/library/library_text.h"

#include <type_traits>

namespace partkeep {

namespace {

void Put(char* buffer, const QString& text)
{
    if (buffer != nullptr) {
        CopyNarrow(text, {buffer, short_text_bytes});
    }
}

void Put(LongText* buffer, const QString& text)
{
    if (buffer != nullptr) {
        CopyNarrow(text, *buffer);
    }
}

template <typename T>
void Put(T* target, std::type_identity_t<T> value)
{
    if (target != nullptr) {
        *target = value;
    }
}

// The session's own members, and what stands between them and the caller's memory. Null pointers are no room.
struct SessionCalls : MemberCalls<CBrowserSession> {
    using MemberCalls::operator();

    bool operator()(browser::GetServerList, ServerTable* table) const
    {
        return table != nullptr && target.GetServerList(*table);
    }
    bool operator()(browser::SetServerList, ServerTable* table) const
    {
        return table != nullptr && target.SetServerList(*table);
    }
    bool operator()(browser::GetViewState, std::int16_t* values) const
    {
        return values != nullptr &&
               target.GetViewState(std::span<std::int16_t, view_state_values>(values, view_state_values));
    }
    void operator()(browser::SetViewState, const std::int16_t* values) const
    {
        if (values != nullptr) {
            target.SetViewState(std::span<const std::int16_t, view_state_values>(values, view_state_values));
        }
    }
    bool operator()(browser::ReadPartImage, ControlText /*working_folder*/, void* image, void* /*scratch*/) const
    {
        return image != nullptr &&
               target.ReadPartImage(std::span<char, image_block_bytes>(static_cast<char*>(image), image_block_bytes));
    }
    // What the component never reads is cleared.
    bool operator()(browser::ReadPartAttributes, ControlText server, ControlText part_path, char16_t* /*part_name*/,
                    std::int32_t* thickness, std::int32_t* argument5, std::int16_t* argument6, LongText* material,
                    LongText* argument8, LongText* machine, std::int32_t* argument10, std::int32_t* argument11,
                    LongText* comment, std::int16_t* argument13, std::int16_t* argument14) const
    {
        const auto part = target.ReadPartAttributes(server, part_path);
        if (!part) {
            return false;
        }
        Put(thickness, part->thickness);
        Put(material, part->material);
        Put(machine, part->machine);
        Put(comment, part->comment);
        Put(argument8, QString());
        for (std::int32_t* unread : {argument5, argument10, argument11}) {
            Put(unread, 0);
        }
        for (std::int16_t* unread : {argument6, argument13, argument14}) {
            Put(unread, 0);
        }
        return true;
    }
    std::int32_t operator()(browser::GetSelectedPart, std::int16_t index, char* server, char* folder,
                            char* part_name) const
    {
        const auto part = target.GetSelectedPart(index);
        if (part) {
            Put(server, part->server);
            Put(folder, part->folder);
            Put(part_name, part->name);
        }
        return part ? 1 : 0;
    }
};

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
    ++calls_;
    ControlResult answer;
    try {
        answer = Dispatch(browser::contract, SessionCalls{{*session_}}, {dispatch_id, kind, arguments, result});
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
