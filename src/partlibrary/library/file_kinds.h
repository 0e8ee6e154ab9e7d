// The files and pictures that a part can have, and which of them a kind mask selects.
//
// A slot has a kind; a mask selects the slots whose kind lies in it whole. The part's own data has two bits,
// so that no machine line's mask copies it a second time.
//
//   slot  file   kind  in the masks
//   0     .iga   24    24 (the part's own data)
//   1     .bmf   24    24
//   2     .SY5   4     20 (NCT), 15 (MARVEN)
//   3     .NCD   2     10 (LASER), 15 (MARVEN)
//   4     "2D"   0     none: pictures are asked for by their tag
//   5     "3D"   0
//   6     "PNG"  0
//
// The mask -1 selects all of slots 0 to 3.
#pragma once

#include "controls/part_browser_contract.h"

#include <QString>
#include <QStringView>

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace partkeep {

enum class FileSlot : std::uint8_t { Iga, Bmf, Sy5, Ncd, Flat, Bent, Png };

struct FileKind {
    FileSlot slot;
    std::int16_t kind;          // 0 for a picture
    const char16_t* extension;  // of the file that is written
    const char16_t* import_end; // what a file to import ends with, beside letter case
    std::string_view tag;       // of a picture request; empty for a file
};

inline constexpr std::array<FileKind, 7> file_kinds{{
    {FileSlot::Iga, part_data_kind, u".iga", u".iga", {}},
    {FileSlot::Bmf, part_data_kind, u".bmf", u".bmf", {}},
    {FileSlot::Sy5, 4, u".SY5", u".SY5", {}},
    {FileSlot::Ncd, 2, u".NCD", u".NCD", {}},
    {FileSlot::Flat, 0, u".bmp", u".2D.bmp", "2D"},
    {FileSlot::Bent, 0, u".bmp", u".3D.bmp", "3D"},
    {FileSlot::Png, 0, u".PNG", u".png", "PNG"},
}};

[[nodiscard]] constexpr const FileKind& KindOf(FileSlot slot)
{
    return file_kinds[static_cast<std::size_t>(slot)];
}

// A set of slots: bit n stands for slot n.
using SlotSet = std::uint32_t;

[[nodiscard]] constexpr SlotSet SetOf(FileSlot slot)
{
    return SlotSet{1} << static_cast<unsigned>(slot);
}

[[nodiscard]] SlotSet SlotsOfMask(std::int16_t kind_mask);

// The slot that an image block asks for by its first bytes; nothing for another tag.
[[nodiscard]] std::optional<FileSlot> SlotOfTag(std::string_view block);

struct ImportName {
    QStringView part;
    FileSlot slot;
};

// Takes a file name apart; nothing when its ending belongs to no slot or no name stands before it.
[[nodiscard]] std::optional<ImportName> ParseImportName(QStringView file_name);

} // namespace partkeep
