#include "partdata/part_lookup.h"

#include "partdata/plain_message.h"
#include "partdata/staging.h"
#include "platform/files.h"
#include "platform/text.h"

#include <algorithm>
#include <array>

namespace partkeep {

namespace {

// What the browser takes as a part's path; the bare name alone is not enough.
std::u16string PartPath(std::u16string_view folder, std::u16string_view name)
{
    return std::u16string(folder) + path_separator + std::u16string(name);
}

} // namespace

CPartLookup::CPartLookup(CKPDKeyManager& browser, IMessages& messages, LookupState state)
    : browser_(browser), messages_(messages), state_(state)
{
}

std::u16string CPartLookup::NameSelectedEntry(std::int16_t index)
{
    state_.currentServer = browser_.GetCurrentServer();
    state_.lookupFolder = browser_.GetCurrentFolder();
    std::array<char, long_text_bytes> server{};
    std::array<char, long_text_bytes> folder{};
    std::array<char, long_text_bytes> name{};
    browser_.GetSelectedPart(index, server.data(), folder.data(), name.data());
    name.back() = '\0';
    return WidenText(name.data());
}

bool CPartLookup::QueryPartInfo(std::u16string_view server, std::u16string_view folder, std::u16string_view name,
                                PartRecord& record)
{
    PartAttributeBlocks blocks(name);
    if (!browser_.ReadPartAttributes(server, PartPath(folder, name), blocks)) {
        return false;
    }
    record.MachineName = WidenText(blocks.machine.data());
    record.MaterialType = WidenText(blocks.material.data());
    record.PartComment = WidenText(blocks.comment.data());
    record.Thickness = blocks.thickness / double{thickness_units};
    return true;
}

bool CPartLookup::IsPartListed(std::int16_t index, const std::list<PartRecord>& list, WhenListed what)
{
    PartRecord entry;
    entry.PartName = NameSelectedEntry(index);
    if (entry.PartName.empty()) {
        return true;
    }
    entry.serverName = state_.currentServer;
    entry.folderName = state_.lookupFolder;
    if (std::none_of(list.begin(), list.end(), [&entry](const auto& listed) { return IsSamePart(listed, entry); })) {
        return false;
    }
    if (what == WhenListed::TellUser) {
        ShowPlainMessage(messages_, LoadLocalString(LocalString::TheSelectedPart) + u" " + entry.PartName + u" " +
                                        LoadLocalString(LocalString::IsAlreadyAdded));
    }
    return true;
}

bool CPartLookup::StagePart(std::int16_t index, std::u16string_view staging_folder, std::u16string_view quantity,
                            PartRecord& record)
{
    const std::u16string name = NameSelectedEntry(index);
    if (name.empty()) {
        ShowPlainMessage(messages_, LocalString::PartDoesNotExist);
        return false;
    }
    ClearStagedPart(std::u16string(staging_folder) + path_separator, name);

    PartRecord part;
    // A part whose attributes cannot be read is staged all the same.
    QueryPartInfo(state_.currentServer, state_.lookupFolder, name, part);
    part.Qty = quantity;
    part.PartName = name;
    part.serverName = state_.currentServer;
    part.folderName = state_.lookupFolder;
    part.stagingFolder = staging_folder;
    part.MachineType = state_.filter.FilterState;
    record = part;

    CopyFiles(name);
    return true;
}

// The part's own data first, then the machine line's beside it. Both calls' results say nothing reliable; what is
// on disk at the end counts.
void CPartLookup::CopyFiles(std::u16string_view name)
{
    const std::u16string path = PartPath(state_.lookupFolder, name);
    browser_.SetDataKind(part_data_kind);
    browser_.CopyPartFiles(state_.currentServer, path);
    const std::int16_t kind = state_.filter.dataKind;
    if (kind != all_data_kinds && kind != part_data_kind) {
        browser_.SetDataKind(kind);
        browser_.CopyPartFiles(state_.currentServer, path);
    }
}

void CPartLookup::DeleteSelectedPartFiles(std::int16_t index)
{
    const std::u16string name = NameSelectedEntry(index);
    if (name.empty()) {
        ShowPlainMessage(messages_, LocalString::PartDoesNotExist);
        return;
    }
    DeletePartFiles(name);
}

} // namespace partkeep
