// The names of one block, decoded: an id gives a name, and a name gives an id. Handles and iterators of a block
// share one table, so that a name once given out stays readable while any of them lives. Only blocks of several
// names have one: a lone name is read where it stands.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

#include "xml/xml_array.h"
#include "xml/xml_string.h"
#include "xml/xml_vector.h"

namespace partkeep {

// A body shared by count.
class CXmlBody {
public:
    CXmlBody() = default;
    CXmlBody(const CXmlBody&) = delete;
    CXmlBody& operator=(const CXmlBody&) = delete;
    virtual ~CXmlBody() = default;

    void AddReference() { ++references_; }
    void DropReference()
    {
        if (--references_ == 0) {
            delete this;
        }
    }

    // Null when there is no memory.
    static void* operator new(std::size_t size) noexcept { return AllocateXml(size, alignof(std::max_align_t)); }
    static void operator delete(void* body, std::size_t size) { FreeXml(body, size); }

private:
    std::uint32_t references_ = 1;
};

template <class Body>
class CXmlShared {
public:
    CXmlShared() = default;
    // Takes over the reference that the body starts with.
    explicit CXmlShared(Body* body) : body_(body) {}
    CXmlShared(const CXmlShared& other) : body_(other.body_)
    {
        if (body_ != nullptr) {
            body_->AddReference();
        }
    }
    CXmlShared(CXmlShared&& other) noexcept : body_(std::exchange(other.body_, nullptr)) {}
    CXmlShared& operator=(CXmlShared other) noexcept
    {
        std::swap(body_, other.body_);
        return *this;
    }
    ~CXmlShared()
    {
        if (body_ != nullptr) {
            body_->DropReference();
        }
    }

    [[nodiscard]] Body* Get() const { return body_; }
    Body* operator->() const { return body_; }
    explicit operator bool() const { return body_ != nullptr; }

private:
    Body* body_ = nullptr;
};

class CXmlNameBucket final : public CXmlBody {
public:
    struct Pair {
        CXmlString name;
        std::uint32_t fingerprint = 0;
        std::uint16_t id = 0;
    };

    // Null when the name is not here.
    [[nodiscard]] Pair* Find(std::string_view name, std::uint32_t fingerprint);
    [[nodiscard]] bool Add(Pair pair);
    [[nodiscard]] CXmlVector<Pair>& Pairs() { return pairs_; }
    // To be called when pairs have been taken out.
    [[nodiscard]] bool RenewPlaces();

private:
    void Place(std::size_t position);

    CXmlVector<Pair> pairs_;
    // Names that begin with the same four bytes all meet in one bucket. A long bucket is therefore found through
    // open addressing over its pairs (position + 1, 0 for free); a short one, by going through it.
    CXmlVector<std::uint32_t> places_;
};

class CXmlNameTable final : public CXmlBody {
public:
    // Null when there is no memory.
    [[nodiscard]] static CXmlShared<CXmlNameTable> Make();

    // The name of an id, NUL-terminated; null for an id that has none, or when there is no memory. Decodes
    // `name_array`, of the block that all callers of this table stand on, as far as it must: few names of a large copy
    // may be asked for, each by a handle with a table of its own.
    [[nodiscard]] const char* NameOf(std::uint16_t id, const std::byte* name_array)
    {
        if (id > names_.Size() && !FillTo(id, name_array)) {
            return nullptr;
        }
        return id == 0 || id > names_.Size() ? nullptr : names_[id - 1U].Text();
    }

    // 0 when the name is absent.
    [[nodiscard]] std::uint16_t Find(std::string_view name);

    // The name's id, a new one where it has none; 0 when there is no memory, or no id left.
    [[nodiscard]] std::uint16_t Intern(std::string_view name);

    [[nodiscard]] const CXmlVector<CXmlString>& Names() const { return names_; }
    [[nodiscard]] std::uint32_t BucketCount() const { return bucket_count_; }

private:
    [[nodiscard]] bool FillTo(std::uint16_t id, const std::byte* name_array);
    [[nodiscard]] std::uint16_t* Slot(const CXmlString& name, std::uint32_t fingerprint);
    [[nodiscard]] bool Index();
    [[nodiscard]] bool Rehash();
    [[nodiscard]] bool MoveStrangers(std::size_t bucket);
    [[nodiscard]] CXmlNameBucket* BucketAt(std::size_t bucket);

    std::uint32_t bucket_count_ = 7;
    CXmlVector<CXmlShared<CXmlNameBucket>> buckets_;
    std::uint32_t count_ = 0;
    CXmlVector<CXmlString> names_;
    std::size_t indexed_ = 0;       // names that the buckets know; they are filled when a name is first looked up
    std::optional<CXmlItems> next_; // the name that is to be decoded next, once one has been asked for
};

} // namespace partkeep
