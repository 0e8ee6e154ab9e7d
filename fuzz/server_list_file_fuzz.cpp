// Arbitrary text as the server list file: what is read keeps the table's form and the limits, and once written it
// is read and written again as the same bytes. The first byte chooses the code page.
#include "platform/text.h"
#include "settings/server_list_file.h"

#include <cstdint>
#include <cstdlib>

using namespace partkeep;

namespace {

void Check(bool holds)
{
    if (!holds) {
        std::abort();
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size == 0) {
        return 0;
    }
    SetSystemCodePage(data[0] % 2 == 0 ? shift_jis_code_page : utf8_code_page);
    const std::string_view text(reinterpret_cast<const char*>(data) + 1, size - 1);

    ServerListState state;
    ParseServerList(text, state);
    Check(state.viewState.size() <= max_view_state_values);
    for (const auto& slot : state.serverTable.slots) {
        Check(slot.back() == '\0');
    }
    const std::string written = FormatServerList(state);
    ServerListState again;
    ParseServerList(written, again);
    Check(FormatServerList(again) == written);
    return 0;
}
