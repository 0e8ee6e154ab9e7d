// The two values that the host sets for the whole process: every object, dialog and read sees the same copy,
// and they live as long as the component is loaded. Nothing guards them: a host calls one operation at a time.
#pragma once

#include <cstdint>
#include <string>

namespace partkeep {

struct ProcessValues {
    std::u16string workingFolder; // raw prefix of every staging path; the host ends it with a separator
    std::int32_t languageId = 0;  // 1 English, 2 Japanese, 3 simplified Chinese, anything else neutral
};

[[nodiscard]] ProcessValues& TheProcessValues();

} // namespace partkeep
