#include <partkeep_read.hpp>

int main()
{
    const partkeep_read_api::Reader reader;
    return !reader.FirstPart() && partkeep_read_api::LoadedVersion() == PARTKEEP_READ_VERSION &&
                   reader.NumberOfPartsSelected() == 0 && reader.PartInfo(0).part_name.empty()
               ? 0
               : 1;
}
