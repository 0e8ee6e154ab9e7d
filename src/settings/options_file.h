// The options file ZanPartkeepConfig.xml: what the user chose in the selection dialog, kept from one run to the next.
#pragma once

#include "platform/files.h"

#include <cstdint>
#include <string_view>

namespace partkeep {

// Overwrites what the file holds; a value whose leaf is missing or empty of a value stays, as do both when there is
// no file, or none that can be read. `quantity_prompt` becomes 0 or 1; `filter_state` is tested against no range.
// Answers how the file is to be replaced: one that the system could not read must not be lost.
OldFile ReadOptionsFile(std::u16string_view path, std::int16_t& quantity_prompt, std::int16_t& filter_state);

// Replaces the file as a whole. One that cannot be written stays as it is, and nothing is said.
void WriteOptionsFile(std::u16string_view path, std::int16_t quantity_prompt, std::int16_t filter_state,
                      OldFile old_file = OldFile::Dropped);

} // namespace partkeep
