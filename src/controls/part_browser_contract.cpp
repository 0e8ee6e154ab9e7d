#include "controls/part_browser_contract.h"

#include <algorithm>

namespace partkeep {

namespace {

using enum ControlType;
using enum BrowserOperation;

constexpr std::array one_text{Text};
constexpr std::array two_texts{Text, Text};
constexpr std::array one_int16{Int16};
constexpr std::array one_block{UnknownRef};
constexpr std::array view_state{Int16Ref};
constexpr std::array image_arguments{Text, UnknownRef, UnknownRef};
constexpr std::array selected_part_arguments{Int16, TextRef, TextRef, TextRef};
constexpr std::array attribute_arguments{Text,    Text,    TextRef,  Int32Ref, Int32Ref, Int16Ref, TextRef,
                                         TextRef, TextRef, Int32Ref, Int32Ref, TextRef,  Int16Ref, Int16Ref};

constexpr std::array<OperationSignature, 27> signatures{{
    {ConnectServer, "ConnectServer", Bool, one_text},
    {DisconnectServer, "DisconnectServer", None, {}},
    {SetTargetFolder, "SetTargetFolder", Bool, one_text},
    {GetPreviewFileTitle, "GetPreviewFileTitle", Text, {}},
    {SetDataKind, "SetDataKind", Bool, one_int16},
    {GetLastStatus, "GetLastStatus", Int32, {}},
    {GetCurrentServer, "GetCurrentServer", Text, {}},
    {SetCurrentServer, "SetCurrentServer", None, one_text},
    {SetDisplayUnit, "SetDisplayUnit", None, one_int16},
    {SelectNextServer, "SelectNextServer", None, {}},
    {OpenFolderSelection, "OpenFolderSelection", None, {}},
    {SetCurrentFolder, "SetCurrentFolder", Bool, one_text},
    {GetCurrentFolder, "GetCurrentFolder", Text, {}},
    {RefreshPartList, "RefreshPartList", Bool, {}},
    {GetServerList, "GetServerList", Bool, one_block},
    {SetServerList, "SetServerList", Bool, one_block},
    {GetViewState, "GetViewState", Bool, view_state},
    {GetViewStateCount, "GetViewStateCount", Int16, {}},
    {SetViewState, "SetViewState", None, view_state},
    {SetPartFilter, "SetPartFilter", Bool, one_int16},
    {ReadPartImage, "ReadPartImage", Bool, image_arguments},
    {MoveFocus, "MoveFocus", Int16, one_int16},
    {CopyPartFiles, "CopyPartFiles", Bool, two_texts},
    {ReadPartAttributes, "ReadPartAttributes", Bool, attribute_arguments},
    {GetSelectedPartCount, "GetSelectedPartCount", Int32, {}},
    {GetSelectedPart, "GetSelectedPart", Int32, selected_part_arguments},
    {SelectAllParts, "SelectAllParts", Int16, one_int16},
}};

} // namespace

std::span<const OperationSignature> BrowserSignatures()
{
    return signatures;
}

const OperationSignature* FindBrowserSignature(std::int32_t dispatch_id)
{
    const auto* found = std::find_if(signatures.begin(), signatures.end(), [dispatch_id](const auto& row) {
        return static_cast<std::int32_t>(row.operation) == dispatch_id;
    });
    return found != signatures.end() ? found : nullptr;
}

} // namespace partkeep
