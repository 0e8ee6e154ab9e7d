// The options file ZanPartkeepConfig.xml: what the user chose in the selection dialog, kept from one run to the next.
#pragma once

#include "platform/files.h"

#include <cstdint>
#include <string_view>

namespace partkeep {

struct SelectionOptions {
    std::int16_t quantityPrompt = 0; // a check box's state: written as true or false, read as 1 or 0
    std::int16_t filterState = 0;    // tested against no range
};

// Overwrites what the file holds; a value whose leaf is missing or empty of a value stays, as do both when there is
// no file, or none that can be read. Answers how the file is to be replaced: one that the system could not read must
// not be lost.
OldFile ReadOptionsFile(std::u16string_view path, SelectionOptions& options);

// Replaces the file as a whole. One that cannot be written stays as it is, and nothing is said.
void WriteOptionsFile(std::u16string_view path, const SelectionOptions& options, OldFile old_file = OldFile::Dropped);

} // namespace partkeep
