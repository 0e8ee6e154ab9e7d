#include "host/cad_data_reader.h"

#include "controls/kpd_key_manager.h"
#include "partdata/plain_message.h"
#include "platform/files.h"
#include "platform/text.h"
#include "settings/local_strings.h"

#include <utility>

namespace partkeep {

namespace {

constexpr std::int32_t hidden_browser_id = 12033342;
constexpr int hidden_browser_extent = 100;

} // namespace

CCADDataReader::CCADDataReader(std::u16string workingFolder, IHiddenControls& controls, IMessages& messages)
    : workingFolder_(std::move(workingFolder)), controls_(controls), messages_(messages)
{
}

bool CCADDataReader::ReadCADData(std::u16string_view server, std::u16string_view folder, std::u16string_view part_name,
                                 std::u16string_view /*data_type*/, PartRecord& record)
{
    CKPDKeyManager browser;
    browser.Attach(
        controls_.CreateHidden(part_browser_class_id, hidden_browser_id, hidden_browser_extent, hidden_browser_extent));
    if (!browser.HasControl()) {
        messages_.Show({cannot_be_started_text, cannot_be_started_title, MessageKind::Exclamation});
        return false;
    }
    if (!browser.ConnectServer(server)) {
        ShowPlainMessage(messages_, LocalString::ServerNotConnected);
        return false;
    }
    browser.SetDataKind(part_data_kind);
    browser.SetCurrentFolder(folder);
    browser.SetTargetFolder(workingFolder_);

    const std::u16string key = std::u16string(folder) + path_separator + std::u16string(part_name);
    PartAttributeBlocks attributes(part_name);
    if (!browser.ReadPartAttributes(server, key, attributes)) {
        return false;
    }
    if (!browser.CopyPartFiles(server, key)) {
        return false;
    }
    record.FilePathName = FindCADFile(part_name);
    record.PartName = part_name;
    record.PartComment = WidenText(attributes.comment.data());
    record.MaterialType = WidenText(attributes.material.data());
    record.Thickness = attributes.thickness;
    record.Qty = u"1";
    return true;
}

std::u16string CCADDataReader::FindCADFile(std::u16string_view part_name)
{
    const std::u16string stem = workingFolder_ + std::u16string(part_name);
    for (const char16_t* extension : {u".iga", u".bmf"}) {
        std::u16string path = stem + extension;
        if (FileExists(path)) {
            return path;
        }
    }
    ShowPlainMessage(messages_, LoadLocalString(LocalString::NoFilesFound) + std::u16string(part_name));
    return {};
}

} // namespace partkeep
