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
    // Bytes up to their terminator when `length` is -1. Null when `text` is null, and when there is no memory.
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

    [[nodiscard]] bool IsNull() const { return cell_ == nullptr; }
    // Not counting the terminator; 0 for a null string.
    [[nodiscard]] std::uint32_t Length() const { return cell_ == nullptr ? 0 : LoadField<std::uint32_t>(cell_); }
    // NUL-terminated; null for a null string. Valid while any copy lives.
    [[nodiscard]] const char* Text() const
    {
        return cell_ == nullptr ? nullptr : reinterpret_cast<const char*>(cell_ + length_width);
    }
    [[nodiscard]] std::string_view View() const { return {Text(), Length()}; }
    // 0 for a null string.
    [[nodiscard]] std::uint32_t References() const
    {
        return cell_ == nullptr ? 0 : LoadField<std::uint32_t>(ReferencesPlace());
    }

private:
    static constexpr std::size_t length_width = 4;

    [[nodiscard]] std::byte* ReferencesPlace() const { return cell_ + length_width + Length() + 1; }
    void AddReference()
    {
        if (cell_ != nullptr) {
            PutField(ReferencesPlace(), References() + 1);
        }
    }
    void DropReference()
    {
        if (cell_ == nullptr) {
            return;
        }
        if (const std::uint32_t left = References() - 1; left != 0) {
            PutField(ReferencesPlace(), left);
        } else {
            Free();
        }
    }
    void Free();

    std::byte* cell_ = nullptr;
};

} // namespace partkeep
