// The language in which the desktop's own windows and texts speak: that of the component's strings.
#pragma once

#include <QLocale>

#include <cstdint>

namespace partkeep {

enum class InterfaceLanguage { English, Japanese, Chinese };

// By the component's language number: 1 English, 2 Japanese, 3 simplified Chinese. Any other follows the user's
// locale among the three, else English: also for Chinese in the other script.
[[nodiscard]] InterfaceLanguage InterfaceLanguageOf(std::int32_t language_id);

// How numbers and dates are written in it.
[[nodiscard]] QLocale LocaleOf(InterfaceLanguage language);

} // namespace partkeep
