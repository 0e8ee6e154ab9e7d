// Counted narrow text, shared by reference. The cell behind it is packed: length (unsigned 32), the bytes, a
// NUL, and directly behind that, unaligned, the count of references (unsigned 32).
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <utility>

#include "xml/xml_field.h"

namespace partkeep {

class CXmlString {
public:
    CXmlString() = default;
    // Bytes up to their terminator when `length` is -1. Null when `text` is null, lost when there is no memory.
    explicit CXmlString(const char* text, std::ptrdiff_t length = -1);
    explicit CXmlString(std::string_view text);
    CXmlString(const CXmlString& other) : cell_(other.cell_) { AddReference(); }
    CXmlString(CXmlString&& other) noexcept : cell_(std::exchange(other.cell_, nullptr)) {}
    CXmlString& operator=(CXmlString other) noexcept
    {
        std::swap(cell_, other.cell_);
        return *this;
    }
    ~CXmlString() { DropReference(); }

    [[nodiscard]] bool IsNull() const { return cell_ == nullptr || IsLost(); }
    // True of a null string that should have held a text, and of its copies: there was no memory.
    [[nodiscard]] bool IsLost() const { return cell_ == lost_cell_; }
    // Not counting the terminator; 0 for a null string.
    [[nodiscard]] std::uint32_t Length() const { return cell_ == nullptr ? 0 : LoadField<std::uint32_t>(cell_); }
    // NUL-terminated; null for a null string. Valid while any copy lives.
    [[nodiscard]] const char* Text() const
    {
        return IsNull() ? nullptr : reinterpret_cast<const char*>(cell_ + length_width);
    }
    [[nodiscard]] std::string_view View() const { return {Text(), Length()}; }
    // 0 for a null string.
    [[nodiscard]] std::uint32_t References() const { return IsNull() ? 0 : CellReferences(); }

private:
    static constexpr std::size_t length_width = 4;

    // An empty text that stands for all that is lost. The one reference that nobody holds keeps it.
    static std::byte lost_cell_[];

    [[nodiscard]] std::uint32_t CellReferences() const { return LoadField<std::uint32_t>(ReferencesPlace()); }
    [[nodiscard]] std::byte* ReferencesPlace() const { return cell_ + length_width + Length() + 1; }
    // Takes the cell; null is a cell that found no memory.
    void Take(std::byte* cell)
    {
        cell_ = cell == nullptr ? lost_cell_ : cell;
        if (cell == nullptr) {
            AddReference();
        }
    }
    void AddReference()
    {
        if (cell_ != nullptr) {
            PutField(ReferencesPlace(), CellReferences() + 1);
        }
    }
    void DropReference()
    {
        if (cell_ == nullptr) {
            return;
        }
        if (const std::uint32_t left = CellReferences() - 1; left != 0) {
            PutField(ReferencesPlace(), left);
        } else {
            Free();
        }
    }
    void Free();

    std::byte* cell_ = nullptr;
};

} // namespace partkeep
