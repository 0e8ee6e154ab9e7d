#include "desktop/interface_language.h"

namespace partkeep {

InterfaceLanguage InterfaceLanguageOf(std::int32_t language_id)
{
    if (language_id >= 1 && language_id <= 3) {
        return static_cast<InterfaceLanguage>(language_id - 1);
    }
    const QLocale locale = QLocale::system();
    if (locale.language() == QLocale::Japanese) {
        return InterfaceLanguage::Japanese;
    }
    const bool simplified = locale.language() == QLocale::Chinese && locale.script() == QLocale::SimplifiedHanScript;
    return simplified ? InterfaceLanguage::Chinese : InterfaceLanguage::English;
}

QLocale LocaleOf(InterfaceLanguage language)
{
    switch (language) {
    case InterfaceLanguage::Japanese:
        return {QLocale::Japanese, QLocale::Japan};
    case InterfaceLanguage::Chinese:
        return {QLocale::Chinese, QLocale::China};
    case InterfaceLanguage::English:
        break;
    }
    return {QLocale::English, QLocale::UnitedStates};
}

} // namespace partkeep
