// Tables of one single-byte or double-byte code page, built through iconv when the page is first asked for.
// Tables instead of iconv itself: conversion by table replaces what has no form exactly as the Windows
// conversions do, needs no state, and is fast on the short texts that are usual here.
#pragma once

#include "platform/text.h"

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

namespace partkeep {

class CCodePageTable {
public:
    // Null for a page that the C library does not know, or whose lower half is not ASCII. Lives as long as
    // the process; may be called from any thread.
    [[nodiscard]] static const CCodePageTable* Find(CodePage page);

    [[nodiscard]] std::u16string Widen(std::string_view narrow) const;
    [[nodiscard]] std::string Narrow(std::u16string_view wide) const;

private:
    bool Fill(CodePage page);
    bool FillWide(const std::string& page_name);
    bool FillNarrow(const std::string& page_name);
    void TakeWindowsForms();

    char16_t malformed_ = u'?';                   // stands for bytes that make no character
    std::array<bool, 256> is_lead_{};             // opens a pair of bytes
    std::array<char16_t, 0x10000> wide_{};        // by code: one byte, or lead and trail; 0 for none, and for NUL
    std::array<std::uint16_t, 0x10000> narrow_{}; // by unit: the code, 0 for none, and for NUL
};

} // namespace partkeep
