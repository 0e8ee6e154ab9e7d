#include "partlibrary/library/file_kinds.h"

#include "controls/part_browser_contract.h"

namespace partkeep {

SlotSet SlotsOfMask(std::int16_t kind_mask)
{
    SlotSet slots = 0;
    for (const FileKind& row : file_kinds) {
        const bool selected = kind_mask == all_data_kinds || (kind_mask & row.kind) == row.kind;
        if (row.kind != 0 && selected) {
            slots |= SetOf(row.slot);
        }
    }
    return slots;
}

// The block is zeroed but for the tag, so a longer text with the same beginning is another tag.
std::optional<FileSlot> SlotOfTag(std::string_view block)
{
    const std::string_view tag = block.substr(0, block.find('\0'));
    for (const FileKind& row : file_kinds) {
        if (!row.tag.empty() && row.tag == tag) {
            return row.slot;
        }
    }
    return std::nullopt;
}

std::optional<ImportName> ParseImportName(QStringView file_name)
{
    for (const FileKind& row : file_kinds) {
        const QStringView end(row.import_end);
        if (file_name.size() > end.size() && file_name.endsWith(end, Qt::CaseInsensitive)) {
            return ImportName{file_name.chopped(end.size()), row.slot};
        }
    }
    return std::nullopt;
}

} // namespace partkeep
