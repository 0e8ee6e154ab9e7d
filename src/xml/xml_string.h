// Counted narrow text, shared by reference. The cell behind it is packed: length (unsigned 32), the bytes, a
// NUL, and directly behind that, unaligned, the count of references (unsigned 32).
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <utility>

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
    [[nodiscard]] std::uint32_t Length() const;
    // NUL-terminated; null for a null string. Valid while any copy lives.
    [[nodiscard]] const char* Text() const;
    [[nodiscard]] std::string_view View() const { return {Text(), Length()}; }
    // 0 for a null string.
    [[nodiscard]] std::uint32_t References() const;

private:
    void AddReference();
    void DropReference();

    std::byte* cell_ = nullptr;
};

} // namespace partkeep
