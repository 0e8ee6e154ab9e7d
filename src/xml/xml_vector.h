// The library's own growable array. Growth that finds no memory is reported by Add, never thrown.
#pragma once

#include <cstddef>
#include <cstring>
#include <new>
#include <type_traits>
#include <utility>

#include "xml/xml_memory.h"

namespace partkeep {

template <class T>
class CXmlVector {
public:
    CXmlVector() = default;
    CXmlVector(CXmlVector&& other) noexcept
        : capacity_(std::exchange(other.capacity_, first_capacity)), begin_(std::exchange(other.begin_, nullptr)),
          end_(std::exchange(other.end_, nullptr))
    {
    }
    CXmlVector& operator=(CXmlVector&& other) noexcept
    {
        std::swap(capacity_, other.capacity_);
        std::swap(begin_, other.begin_);
        std::swap(end_, other.end_);
        return *this;
    }
    CXmlVector(const CXmlVector&) = delete;
    CXmlVector& operator=(const CXmlVector&) = delete;
    ~CXmlVector()
    {
        Clear();
        FreeXml(begin_, capacity_ * sizeof(T));
    }

    // False when there is no memory; the array is then as it was.
    [[nodiscard]] bool Add(T value)
    {
        if ((begin_ == nullptr || Size() == capacity_) && !Grow(Size() + 1)) {
            return false;
        }
        new (end_) T(std::move(value));
        ++end_;
        return true;
    }

    // Room for one more element, to be filled in place; null when there is no memory.
    [[nodiscard]] T* AddPlace() requires std::is_trivially_copyable_v<T>
    {
        if ((begin_ == nullptr || Size() == capacity_) && !Grow(Size() + 1)) {
            return nullptr;
        }
        return end_++;
    }

    // Adds `count` elements bytewise.
    [[nodiscard]] bool AddRun(const T* values, std::size_t count) requires std::is_trivially_copyable_v<T>
    {
        if (count == 0) {
            return true;
        }
        if ((begin_ == nullptr || capacity_ - Size() < count) && !Grow(Size() + count)) {
            return false;
        }
        std::memcpy(end_, values, count * sizeof(T));
        end_ += count;
        return true;
    }

    void RemoveLast()
    {
        --end_;
        end_->~T();
    }

    // Leaves the first `count` elements.
    void Shorten(std::size_t count)
    {
        while (Size() > count) {
            RemoveLast();
        }
    }

    void Clear()
    {
        if constexpr (std::is_trivially_destructible_v<T>) {
            end_ = begin_;
        } else {
            Shorten(0);
        }
    }

    [[nodiscard]] std::size_t Size() const { return static_cast<std::size_t>(end_ - begin_); }
    [[nodiscard]] std::size_t Capacity() const { return capacity_; }
    [[nodiscard]] bool IsEmpty() const { return begin_ == end_; }
    [[nodiscard]] T& operator[](std::size_t index) { return begin_[index]; }
    [[nodiscard]] const T& operator[](std::size_t index) const { return begin_[index]; }
    [[nodiscard]] T& Last() { return end_[-1]; }
    [[nodiscard]] T* begin() { return begin_; }
    [[nodiscard]] T* end() { return end_; }
    [[nodiscard]] const T* begin() const { return begin_; }
    [[nodiscard]] const T* end() const { return end_; }

private:
    static constexpr std::size_t first_capacity = 1;

    bool Grow(std::size_t needed)
    {
        // The first element's memory is taken with it: an array that stays empty costs none.
        std::size_t wider = capacity_;
        while (wider < needed) {
            if (wider > static_cast<std::size_t>(-1) / 2 / sizeof(T)) {
                return false;
            }
            wider *= 2;
        }
        auto* moved = static_cast<T*>(AllocateXml(wider * sizeof(T), alignof(T)));
        if (moved == nullptr) {
            return false;
        }
        T* moved_end = moved;
        for (T* old = begin_; old != end_; ++old, ++moved_end) {
            new (moved_end) T(std::move(*old));
            old->~T();
        }
        FreeXml(begin_, capacity_ * sizeof(T));
        capacity_ = wider;
        begin_ = moved;
        end_ = moved_end;
        return true;
    }

    std::size_t capacity_ = first_capacity;
    T* begin_ = nullptr;
    T* end_ = nullptr;
};

} // namespace partkeep
