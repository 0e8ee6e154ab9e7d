#include "settings/server_list_file.h"

#include "platform/files.h"
#include "platform/text.h"

#include <algorithm>
#include <limits>
#include <optional>

namespace partkeep {

namespace {

constexpr std::int32_t no_value_mark = -9999;
constexpr std::string_view no_value_line = "-9999\n";
constexpr std::u16string_view inch_line = u"inch";
constexpr std::u16string_view file_name = u"\\kpdservers.ini";

// White space of the wide character set: Japanese users meet U+3000 at the end of names.
constexpr std::u16string_view white_space = u"\t\n\v\f\r \u0085\u00A0\u1680\u2000\u2001\u2002\u2003\u2004\u2005\u2006"
                                            u"\u2007\u2008\u2009\u200A\u2028\u2029\u202F\u205F\u3000";

std::u16string_view Trimmed(std::u16string_view text)
{
    const std::size_t first = text.find_first_not_of(white_space);
    if (first == std::u16string_view::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(white_space) - first + 1);
}

// The decimal number at the start of the text, 0 without one. Too large a number becomes the nearest there is.
std::int32_t ValueOf(std::u16string_view text)
{
    using Limits = std::numeric_limits<std::int32_t>;
    const bool negative = text.starts_with(u'-');
    if (negative || text.starts_with(u'+')) {
        text.remove_prefix(1);
    }
    std::int64_t value = 0;
    for (const char16_t digit : text) {
        if (digit < u'0' || digit > u'9') {
            break;
        }
        value = value * 10 + (negative ? u'0' - digit : digit - u'0');
        value = std::clamp<std::int64_t>(value, Limits::min(), Limits::max());
    }
    return static_cast<std::int32_t>(value);
}

bool IsMark(std::u16string_view line)
{
    return ValueOf(line) == no_value_mark;
}

class CLineReader {
public:
    explicit CLineReader(std::string_view text) : rest_(text) {}

    // The next line, trimmed; nothing at the end. A final line without a line end counts. Behind a NUL a line
    // holds nothing: no text of the system has one.
    std::optional<std::u16string> Next()
    {
        if (rest_.empty()) {
            return std::nullopt;
        }
        const std::size_t length = std::min(rest_.find('\n'), rest_.size());
        const std::string_view line = rest_.substr(0, length);
        rest_.remove_prefix(std::min(length + 1, rest_.size()));
        return std::u16string(Trimmed(WidenText(line.substr(0, line.find('\0')))));
    }

private:
    std::string_view rest_;
};

// Leaves the slot alone when the name does not fit: cut short it would be another server's.
bool PutName(ServerTable& table, std::size_t slot, std::string_view name)
{
    if (slot >= server_slots || name.size() >= server_slot_bytes) {
        return false;
    }
    table.slots[slot].fill('\0');
    name.copy(table.slots[slot].data(), name.size());
    return true;
}

// Answers how many names were stored. Reads to the mark, wherever it stands: blank lines and names for which there
// is no room use up no slot, and the lines behind the list keep their meaning.
std::size_t ParseServers(CLineReader& lines, ServerTable& table)
{
    std::size_t stored = 0;
    for (auto line = lines.Next(); line && !IsMark(*line); line = lines.Next()) {
        if (!line->empty() && PutName(table, stored, NarrowText(*line))) {
            ++stored;
        }
    }
    return stored;
}

void ParseViewState(CLineReader& lines, std::vector<std::int16_t>& view_state)
{
    const auto count_line = lines.Next();
    if (!count_line) {
        return;
    }
    const std::int32_t count = ValueOf(*count_line);
    const bool possible = count >= 0 && count <= static_cast<std::int32_t>(max_view_state_values);
    view_state.assign(possible ? static_cast<std::size_t>(count) : 0, 0);
    for (std::int16_t& value : view_state) {
        const auto line = lines.Next();
        if (!line) {
            return;
        }
        value = static_cast<std::int16_t>(ValueOf(*line));
    }
}

// The current server always stands in the table, as far as there is room.
void AddCurrentServer(ServerListState& state, std::size_t stored)
{
    const std::string name = NarrowText(state.currentServer);
    const auto end = state.serverTable.slots.begin() + static_cast<std::ptrdiff_t>(stored);
    const bool listed =
        std::any_of(state.serverTable.slots.begin(), end, [&name](const auto& slot) { return name == slot.data(); });
    if (!listed && !name.empty()) {
        PutName(state.serverTable, stored, name);
    }
}

std::string TextLine(std::u16string_view text)
{
    return text.empty() ? std::string(no_value_line) : NarrowText(text) + '\n';
}

} // namespace

bool ParseServerList(std::string_view text, ServerListState& state)
{
    CLineReader lines(text);
    bool names_folder = false;
    if (const auto line = lines.Next(); line && !line->empty()) {
        state.currentServer = IsMark(*line) ? u"" : *line;
    }
    if (const auto line = lines.Next()) {
        names_folder = !IsMark(*line);
        state.lastFolder = names_folder ? *line : u"";
    }
    if (const auto line = lines.Next(); line && !IsMark(*line)) {
        state.displayUnit = *line == inch_line ? 1 : 0;
    }
    const std::size_t stored = ParseServers(lines, state.serverTable);
    ParseViewState(lines, state.viewState);
    AddCurrentServer(state, stored);
    return names_folder;
}

std::string FormatServerList(const ServerListState& state)
{
    std::string text = TextLine(state.currentServer) + TextLine(state.lastFolder);
    text += state.displayUnit != 0 ? "inch\n" : "metric\n";
    for (const auto& slot : state.serverTable.slots) {
        if (slot.front() == '\0') {
            break;
        }
        text += NarrowText(WidenText(slot.data())) + '\n';
    }
    text += no_value_line;
    text += std::to_string(state.viewState.size()) + '\n';
    for (const std::int16_t value : state.viewState) {
        text += std::to_string(value) + '\n';
    }
    return text;
}

void LoadServerList(ServerListState& state, std::u16string_view install_folder, CKPDKeyManager& browser)
{
    const auto text = ReadTextFile(std::u16string(install_folder) + std::u16string(file_name), &state.fileUnread);
    if (text && ParseServerList(*text, state)) {
        browser.SetCurrentFolder(state.lastFolder);
    }
}

void SaveServerList(ServerListState& state, std::u16string_view install_folder, CKPDKeyManager& browser)
{
    browser.GetServerList(state.serverTable);
    state.currentServer = browser.GetCurrentServer();
    const auto count = static_cast<std::size_t>(browser.GetViewStateCount());
    // Room for as many as there can be, so that a browser that writes more than it announced does no harm.
    state.viewState.assign(max_view_state_values, 0);
    browser.GetViewState(state.viewState.data());
    state.viewState.resize(count);
    ReplaceTextFile(std::u16string(install_folder) + std::u16string(file_name), FormatServerList(state),
                    state.fileUnread ? OldFile::Kept : OldFile::Dropped);
}

std::vector<std::int16_t> PaddedViewState(const std::vector<std::int16_t>& view_state)
{
    std::vector<std::int16_t> values = view_state;
    values.resize(max_view_state_values, 0);
    return values;
}

} // namespace partkeep
