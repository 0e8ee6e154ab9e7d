// A test program holds the string table itself: there is no module of the component's name in it.
#include "platform/windows/string_module.h"

namespace {

[[maybe_unused]] const bool strings_are_own = [] {
    partkeep::SetStringModule(nullptr);
    return true;
}();

} // namespace
