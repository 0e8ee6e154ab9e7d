#include "controls/kpd_key_manager.h"

#include <algorithm>

namespace partkeep {

namespace {

constexpr std::int32_t Id(BrowserOperation operation)
{
    return static_cast<std::int32_t>(operation);
}

} // namespace

PartAttributeBlocks::PartAttributeBlocks(std::u16string_view name)
{
    name.copy(part_name.data(), part_name.size() - 1);
}

bool CKPDKeyManager::ConnectServer(std::u16string_view server)
{
    return InvokeBool(Id(BrowserOperation::ConnectServer), {Text(server)});
}

void CKPDKeyManager::DisconnectServer()
{
    InvokeNone(Id(BrowserOperation::DisconnectServer));
}

bool CKPDKeyManager::SetTargetFolder(std::u16string_view folder)
{
    return InvokeBool(Id(BrowserOperation::SetTargetFolder), {Text(folder)});
}

std::u16string CKPDKeyManager::GetPreviewFileTitle()
{
    return InvokeText(Id(BrowserOperation::GetPreviewFileTitle));
}

bool CKPDKeyManager::SetDataKind(std::int16_t kind_mask)
{
    return InvokeBool(Id(BrowserOperation::SetDataKind), {Int16(kind_mask)});
}

std::int32_t CKPDKeyManager::GetLastStatus()
{
    return InvokeInt32(Id(BrowserOperation::GetLastStatus));
}

std::u16string CKPDKeyManager::GetCurrentServer()
{
    return InvokeText(Id(BrowserOperation::GetCurrentServer));
}

void CKPDKeyManager::SetCurrentServer(std::u16string_view server)
{
    InvokeNone(Id(BrowserOperation::SetCurrentServer), {Text(server)});
}

void CKPDKeyManager::SetDisplayUnit(std::int16_t unit)
{
    InvokeNone(Id(BrowserOperation::SetDisplayUnit), {Int16(unit)});
}

void CKPDKeyManager::SelectNextServer()
{
    InvokeNone(Id(BrowserOperation::SelectNextServer));
}

void CKPDKeyManager::OpenFolderSelection()
{
    InvokeNone(Id(BrowserOperation::OpenFolderSelection));
}

bool CKPDKeyManager::SetCurrentFolder(std::u16string_view folder)
{
    return InvokeBool(Id(BrowserOperation::SetCurrentFolder), {Text(folder)});
}

std::u16string CKPDKeyManager::GetCurrentFolder()
{
    return InvokeText(Id(BrowserOperation::GetCurrentFolder));
}

bool CKPDKeyManager::RefreshPartList()
{
    return InvokeBool(Id(BrowserOperation::RefreshPartList));
}

bool CKPDKeyManager::GetServerList(ServerTable& table)
{
    const bool answer = InvokeBool(Id(BrowserOperation::GetServerList), {UnknownRef(&table)});
    for (auto& slot : table.slots) {
        slot.back() = '\0';
    }
    return answer;
}

// The control reads the table during the call only; it takes a copy so that nothing can write to the caller's.
bool CKPDKeyManager::SetServerList(const ServerTable& table)
{
    ServerTable copy = table;
    return InvokeBool(Id(BrowserOperation::SetServerList), {UnknownRef(&copy)});
}

bool CKPDKeyManager::GetViewState(std::int16_t* values)
{
    return InvokeBool(Id(BrowserOperation::GetViewState), {Int16Ref(values)});
}

std::int16_t CKPDKeyManager::GetViewStateCount()
{
    return std::max<std::int16_t>(0, InvokeInt16(Id(BrowserOperation::GetViewStateCount)));
}

void CKPDKeyManager::SetViewState(const std::int16_t* values)
{
    InvokeNone(Id(BrowserOperation::SetViewState), {Int16Ref(const_cast<std::int16_t*>(values))});
}

bool CKPDKeyManager::SetPartFilter(std::int16_t kind_mask)
{
    return InvokeBool(Id(BrowserOperation::SetPartFilter), {Int16(kind_mask)});
}

bool CKPDKeyManager::ReadPartImage(std::u16string_view working_folder, void* image, void* scratch)
{
    return InvokeBool(Id(BrowserOperation::ReadPartImage),
                      {Text(working_folder), UnknownRef(image), UnknownRef(scratch)});
}

std::int16_t CKPDKeyManager::MoveFocus(std::int16_t code)
{
    return InvokeInt16(Id(BrowserOperation::MoveFocus), {Int16(code)});
}

bool CKPDKeyManager::CopyPartFiles(std::u16string_view server, std::u16string_view part_path)
{
    return InvokeBool(Id(BrowserOperation::CopyPartFiles), {Text(server), Text(part_path)});
}

bool CKPDKeyManager::ReadPartAttributes(std::u16string_view server, std::u16string_view part_path,
                                        PartAttributeBlocks& blocks)
{
    const bool answer =
        InvokeBool(Id(BrowserOperation::ReadPartAttributes),
                   {Text(server), Text(part_path), TextRef(blocks.part_name.data()), Int32Ref(&blocks.thickness),
                    Int32Ref(&blocks.argument5), Int16Ref(&blocks.argument6), TextRef(blocks.material.data()),
                    TextRef(blocks.argument8.data()), TextRef(blocks.machine.data()), Int32Ref(&blocks.argument10),
                    Int32Ref(&blocks.argument11), TextRef(blocks.comment.data()), Int16Ref(&blocks.argument13),
                    Int16Ref(&blocks.argument14)});
    blocks.material.back() = '\0';
    blocks.machine.back() = '\0';
    blocks.comment.back() = '\0';
    return answer;
}

std::int32_t CKPDKeyManager::GetSelectedPartCount()
{
    return std::max<std::int32_t>(0, InvokeInt32(Id(BrowserOperation::GetSelectedPartCount)));
}

std::int32_t CKPDKeyManager::GetSelectedPart(std::int16_t index, char* server, char* folder, char* part_name)
{
    return InvokeInt32(Id(BrowserOperation::GetSelectedPart),
                       {Int16(index), TextRef(server), TextRef(folder), TextRef(part_name)});
}

std::int16_t CKPDKeyManager::SelectAllParts(std::int16_t select)
{
    return InvokeInt16(Id(BrowserOperation::SelectAllParts), {Int16(select)});
}

} // namespace partkeep
