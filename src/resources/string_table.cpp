#include "resources/string_table.h"

namespace partkeep {

namespace {

constexpr StringRow rows[] = {
#define STRING_ROW(number, english, japanese, chinese) {number, u"" english, u"" japanese, u"" chinese},
#include "resources/strings.inc"
#undef STRING_ROW
};

} // namespace

std::span<const StringRow> StringTable()
{
    return rows;
}

} // namespace partkeep
