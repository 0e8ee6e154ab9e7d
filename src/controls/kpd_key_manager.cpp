#include "controls/kpd_key_manager.h"

namespace partkeep {

PartAttributeBlocks::PartAttributeBlocks(std::u16string_view name)
{
    name.copy(part_name.data(), part_name.size() - 1);
}

bool CKPDKeyManager::ReadPartAttributes(std::u16string_view server, std::u16string_view part_path,
                                        PartAttributeBlocks& blocks)
{
    return InvokeHelper<browser::ReadPartAttributes>(
        server, part_path, blocks.part_name.data(), &blocks.thickness, &blocks.argument5, &blocks.argument6,
        &blocks.material, &blocks.argument8, &blocks.machine, &blocks.argument10, &blocks.argument11, &blocks.comment,
        &blocks.argument13, &blocks.argument14);
}

} // namespace partkeep
