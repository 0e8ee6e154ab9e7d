// Owns one reference on an object of the component model.
#pragma once

#include <utility>

namespace partkeep {

template <class T>
class CComPtr {
public:
    CComPtr() = default;
    explicit CComPtr(T* object) : object_(object) // adds a reference
    {
        if (object_ != nullptr) {
            object_->AddRef();
        }
    }
    CComPtr(const CComPtr& other) : CComPtr(other.object_) {}
    CComPtr(CComPtr&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
    CComPtr& operator=(CComPtr other) noexcept
    {
        std::swap(object_, other.object_);
        return *this;
    }
    ~CComPtr() { Reset(); }

    // The place for an out-argument that brings its own reference.
    [[nodiscard]] T** Put()
    {
        Reset();
        return &object_;
    }
    [[nodiscard]] void** PutVoid() { return reinterpret_cast<void**>(Put()); }

    // Cleared before the release, since a release may lead back here.
    void Reset()
    {
        if (T* object = std::exchange(object_, nullptr); object != nullptr) {
            object->Release();
        }
    }

    [[nodiscard]] T* Get() const { return object_; }
    T* operator->() const { return object_; }
    explicit operator bool() const { return object_ != nullptr; }

private:
    T* object_ = nullptr;
};

} // namespace partkeep
