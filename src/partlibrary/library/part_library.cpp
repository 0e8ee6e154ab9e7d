#include "partlibrary/library/part_library.h"

namespace partkeep {

std::optional<std::vector<PartRow>> IPartLibrary::FindParts(std::span<const PartId> ids)
{
    std::vector<PartRow> rows;
    for (const PartId id : ids) {
        auto row = FindPart(id);
        if (!row && Problem().fault != LibraryFault::NoPart && Problem().fault != LibraryFault::NameRefused) {
            return std::nullopt;
        }
        rows.push_back(std::move(row).value_or(PartRow()));
    }
    return rows;
}

} // namespace partkeep
