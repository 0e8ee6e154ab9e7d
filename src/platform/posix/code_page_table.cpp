#include "platform/posix/code_page_table.h"

#include <cerrno>
#include <cstddef>
#include <iconv.h>
#include <map>
#include <memory>
#include <mutex>

namespace partkeep {

namespace {

enum class Outcome { Done, Incomplete, Failed };

class CConverter {
public:
    CConverter(const char* to, const char* from) : handle_(iconv_open(to, from)) {}
    ~CConverter()
    {
        if (IsOpen()) {
            iconv_close(handle_);
        }
    }
    CConverter(const CConverter&) = delete;
    CConverter& operator=(const CConverter&) = delete;

    [[nodiscard]] bool IsOpen() const { return reinterpret_cast<std::intptr_t>(handle_) != -1; }

    // Converts one character. Done only if it filled exactly one unit, or at most two bytes.
    Outcome Convert(std::string_view from, std::string& to)
    {
        std::array<char, 8> buffer{};
        char* in = const_cast<char*>(from.data()); // the interface's own type; iconv reads it only
        std::size_t in_left = from.size();
        char* out = buffer.data();
        std::size_t out_left = buffer.size();
        iconv(handle_, nullptr, nullptr, nullptr, nullptr);
        if (iconv(handle_, &in, &in_left, &out, &out_left) == static_cast<std::size_t>(-1)) {
            return errno == EINVAL ? Outcome::Incomplete : Outcome::Failed;
        }
        to.assign(buffer.data(), buffer.size() - out_left);
        return to.empty() || to.size() > 2 ? Outcome::Failed : Outcome::Done;
    }

private:
    iconv_t handle_;
};

char16_t UnitOf(const std::string& bytes)
{
    if (bytes.size() != 2) {
        return 0;
    }
    const unsigned low = static_cast<unsigned char>(bytes[0]);
    const unsigned high = static_cast<unsigned char>(bytes[1]);
    return static_cast<char16_t>(high << 8U | low);
}

std::uint16_t CodeOf(const std::string& bytes)
{
    unsigned code = 0;
    for (const char byte : bytes) {
        code = code << 8U | static_cast<unsigned char>(byte);
    }
    return static_cast<std::uint16_t>(code);
}

// Where Windows' page 932 departs from the C library's. It gives five single bytes a unit of their own, writes
// Latin letters without their marks, and refuses five signs whose wide form is ambiguous.
constexpr std::uint16_t no_form = '?';

struct Form {
    char16_t unit;
    std::uint16_t code;
};

constexpr Form paired_932[] = {{0x80, 0x80}, {0xF8F0, 0xA0}, {0xF8F1, 0xFD}, {0xF8F2, 0xFE}, {0xF8F3, 0xFF}};

constexpr Form narrow_only_932[] = {
    {0xA1, '!'},       {0xA6, '|'},       {0xA9, 'c'},       {0xAA, 'a'},      {0xAB, 0x81E1},    {0xAD, '-'},
    {0xAE, 'R'},       {0xAF, 0x8150},    {0xB2, '2'},       {0xB3, '3'},      {0xB5, 0x83CA},    {0xB7, 0x8145},
    {0xB8, 0x8143},    {0xB9, '1'},       {0xBA, 'o'},       {0xBB, 0x81E2},   {0x2014, no_form}, {0x2016, no_form},
    {0x203E, no_form}, {0x2212, no_form}, {0x301C, no_form}, {0x3094, 0x8394},
};

// U+00C0 to U+00FF; a blank keeps what the page has.
constexpr std::string_view plain_letters_932 = "AAAAAAACEEEEIIIIDNOOOOO OUUUUYTsaaaaaaaceeeeiiiidnooooo ouuuuyty";

} // namespace

const CCodePageTable* CCodePageTable::Find(CodePage page)
{
    static std::mutex guard;
    static std::map<CodePage, std::unique_ptr<CCodePageTable>> tables;
    const std::lock_guard lock(guard);
    const auto known = tables.find(page);
    if (known != tables.end()) {
        return known->second.get();
    }
    auto table = std::make_unique<CCodePageTable>();
    if (!table->Fill(page)) {
        return nullptr;
    }
    return (tables[page] = std::move(table)).get();
}

bool CCodePageTable::Fill(CodePage page)
{
    const std::string name = "CP" + std::to_string(page);
    if (!FillWide(name) || !FillNarrow(name)) {
        return false;
    }
    if (page == shift_jis_code_page) {
        TakeWindowsForms();
    }
    return true;
}

bool CCodePageTable::FillWide(const std::string& page_name)
{
    CConverter widener("UTF-16LE", page_name.c_str());
    std::string unit;
    for (unsigned byte = 0; widener.IsOpen() && byte < 0x100; ++byte) {
        const char lead = static_cast<char>(byte);
        const Outcome outcome = widener.Convert({&lead, 1}, unit);
        if (byte < 0x80 && (outcome != Outcome::Done || UnitOf(unit) != byte)) {
            return false;
        }
        is_lead_[byte] = outcome == Outcome::Incomplete;
        wide_[byte] = outcome == Outcome::Done ? UnitOf(unit) : u'\0';
        for (unsigned trail = 1; is_lead_[byte] && trail < 0x100; ++trail) {
            const std::array<char, 2> pair{lead, static_cast<char>(trail)};
            const bool done = widener.Convert({pair.data(), 2}, unit) == Outcome::Done;
            wide_[byte << 8U | trail] = done ? UnitOf(unit) : u'\0';
        }
    }
    return widener.IsOpen();
}

bool CCodePageTable::FillNarrow(const std::string& page_name)
{
    CConverter narrower(page_name.c_str(), "UTF-16LE");
    std::string code;
    for (unsigned unit = 1; narrower.IsOpen() && unit < 0x10000; ++unit) {
        const std::array<char, 2> bytes{static_cast<char>(unit), static_cast<char>(unit >> 8U)};
        if (narrower.Convert({bytes.data(), 2}, code) == Outcome::Done) {
            narrow_[unit] = CodeOf(code);
        }
    }
    return narrower.IsOpen();
}

void CCodePageTable::TakeWindowsForms()
{
    malformed_ = 0x30FB;
    for (const Form& form : paired_932) {
        wide_[form.code] = form.unit;
        narrow_[form.unit] = form.code;
    }
    for (const Form& form : narrow_only_932) {
        narrow_[form.unit] = form.code;
    }
    for (std::size_t at = 0; at < plain_letters_932.size(); ++at) {
        if (plain_letters_932[at] != ' ') {
            narrow_[0xC0 + at] = static_cast<unsigned char>(plain_letters_932[at]);
        }
    }
}

// A lead byte takes the byte behind it along even where the two make no character. Only a NUL, which ends text
// everywhere, is never taken along.
std::u16string CCodePageTable::Widen(std::string_view narrow) const
{
    std::u16string wide;
    wide.reserve(narrow.size());
    for (std::size_t at = 0; at < narrow.size(); ++at) {
        std::size_t code = static_cast<unsigned char>(narrow[at]);
        if (is_lead_[code] && at + 1 < narrow.size() && narrow[at + 1] != '\0') {
            code = code << 8U | static_cast<unsigned char>(narrow[++at]);
        }
        wide += wide_[code] != 0 || code == 0 ? wide_[code] : malformed_;
    }
    return wide;
}

std::string CCodePageTable::Narrow(std::u16string_view wide) const
{
    std::string narrow;
    narrow.reserve(wide.size());
    for (const char16_t unit : wide) {
        const std::uint16_t code = narrow_[unit] != 0 || unit == 0 ? narrow_[unit] : no_form;
        if (code > 0xFF) {
            narrow += static_cast<char>(code >> 8U);
        }
        narrow += static_cast<char>(code & 0xFFU);
    }
    return narrow;
}

} // namespace partkeep
