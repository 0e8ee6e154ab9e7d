// How the recorder notes a message under the usual title, in whatever language the test runs.
#pragma once

#include "settings/local_strings.h"
#include "tests/support/recorder.h"

namespace partkeep {

inline std::string Shown(const std::u16string& text)
{
    return "message " + Quoted(text) + " " + Quoted(LoadLocalString(LocalString::MessageTitle));
}

} // namespace partkeep
