#include "xml/xml_name_table.h"

#include "xml/xml_block.h"

namespace partkeep {

namespace {

constexpr std::size_t short_bucket = 8;

std::uint32_t BucketHash(std::string_view name)
{
    std::uint32_t hash = 0;
    std::memcpy(&hash, name.data(), name.size() < sizeof hash ? name.size() : sizeof hash);
    return hash;
}

// FNV-1a: tells apart the names of one bucket.
std::uint32_t Fingerprint(std::string_view name)
{
    std::uint32_t hash = 2166136261U;
    for (const char byte : name) {
        hash = (hash ^ static_cast<std::uint8_t>(byte)) * 16777619U;
    }
    return hash;
}

} // namespace

CXmlNameBucket::Pair* CXmlNameBucket::Find(std::string_view name, std::uint32_t fingerprint)
{
    const auto fits = [&](const Pair& pair) { return pair.fingerprint == fingerprint && pair.name.View() == name; };
    if (places_.IsEmpty()) {
        for (Pair& pair : pairs_) {
            if (fits(pair)) {
                return &pair;
            }
        }
        return nullptr;
    }
    const std::size_t mask = places_.Size() - 1;
    for (std::size_t place = fingerprint & mask; places_[place] != 0; place = (place + 1) & mask) {
        Pair& pair = pairs_[places_[place] - 1];
        if (fits(pair)) {
            return &pair;
        }
    }
    return nullptr;
}

bool CXmlNameBucket::Add(Pair pair)
{
    if (!pairs_.Add(std::move(pair))) {
        return false;
    }
    if (pairs_.Size() * 2 > places_.Size()) {
        return RenewPlaces();
    }
    Place(pairs_.Size() - 1);
    return true;
}

bool CXmlNameBucket::RenewPlaces()
{
    std::size_t wanted = 0;
    if (pairs_.Size() > short_bucket) {
        for (wanted = 4 * short_bucket; wanted < pairs_.Size() * 4;) {
            wanted *= 2;
        }
    }
    CXmlVector<std::uint32_t> places;
    while (places.Size() < wanted) {
        if (!places.Add(0)) {
            return false;
        }
    }
    places_ = std::move(places);
    for (std::size_t position = 0; !places_.IsEmpty() && position < pairs_.Size(); ++position) {
        Place(position);
    }
    return true;
}

void CXmlNameBucket::Place(std::size_t position)
{
    const std::size_t mask = places_.Size() - 1;
    std::size_t place = pairs_[position].fingerprint & mask;
    while (places_[place] != 0) {
        place = (place + 1) & mask;
    }
    places_[place] = static_cast<std::uint32_t>(position + 1);
}

CXmlShared<CXmlNameTable> CXmlNameTable::Make()
{
    return CXmlShared<CXmlNameTable>(new CXmlNameTable);
}

// Names that stand in extension cells too.
bool CXmlNameTable::FillTo(std::uint16_t id, const std::byte* name_array)
{
    if (!next_) {
        next_.emplace(name_array);
    }
    for (; names_.Size() < id && !next_->AtEnd(); next_->Next()) {
        CXmlString name(next_->Text());
        if (name.IsNull() || !names_.Add(std::move(name))) {
            return false;
        }
    }
    return true;
}

std::uint16_t CXmlNameTable::Find(std::string_view name)
{
    if (!Index()) {
        return 0;
    }
    CXmlNameBucket* bucket = buckets_[BucketHash(name) % bucket_count_].Get();
    const CXmlNameBucket::Pair* pair = bucket == nullptr ? nullptr : bucket->Find(name, Fingerprint(name));
    return pair == nullptr ? std::uint16_t{0} : pair->id;
}

std::uint16_t CXmlNameTable::Intern(std::string_view name)
{
    if (const std::uint16_t known = Find(name); known != 0) {
        return known;
    }
    CXmlString added(name);
    if (names_.Size() >= xml_most_names || added.IsNull() || !names_.Add(std::move(added)) || !Index()) {
        return 0;
    }
    return static_cast<std::uint16_t>(names_.Size());
}

// Brings the buckets up to the names. Of a name that comes twice, the later id counts.
bool CXmlNameTable::Index()
{
    while (buckets_.Size() < bucket_count_) {
        if (!buckets_.Add({})) {
            return false;
        }
    }
    for (; indexed_ < names_.Size(); ++indexed_) {
        std::uint16_t* slot = Slot(names_[indexed_], Fingerprint(names_[indexed_].View()));
        if (slot == nullptr) {
            return false;
        }
        *slot = static_cast<std::uint16_t>(indexed_ + 1);
    }
    return true;
}

std::uint16_t* CXmlNameTable::Slot(const CXmlString& name, std::uint32_t fingerprint)
{
    if (count_ * 2 > bucket_count_ && !Rehash()) {
        return nullptr;
    }
    CXmlNameBucket* bucket = BucketAt(BucketHash(name.View()) % bucket_count_);
    if (bucket == nullptr) {
        return nullptr;
    }
    if (CXmlNameBucket::Pair* pair = bucket->Find(name.View(), fingerprint)) {
        return &pair->id;
    }
    if (!bucket->Add({name, fingerprint, 0})) {
        return nullptr;
    }
    ++count_;
    return &bucket->Pairs().Last().id;
}

CXmlNameBucket* CXmlNameTable::BucketAt(std::size_t bucket)
{
    if (!buckets_[bucket]) {
        buckets_[bucket] = CXmlShared<CXmlNameBucket>(new CXmlNameBucket);
    }
    return buckets_[bucket].Get();
}

bool CXmlNameTable::Rehash()
{
    const std::size_t old_count = bucket_count_;
    bucket_count_ = (bucket_count_ + 1) * 2 - 1;
    while (buckets_.Size() < bucket_count_) {
        if (!buckets_.Add({})) {
            return false;
        }
    }
    for (std::size_t bucket = 0; bucket < old_count; ++bucket) {
        if (buckets_[bucket] && !MoveStrangers(bucket)) {
            return false;
        }
    }
    return true;
}

// Pairs whose bucket is another one by now go to its end; the rest close up.
bool CXmlNameTable::MoveStrangers(std::size_t bucket)
{
    CXmlVector<CXmlNameBucket::Pair>& pairs = buckets_[bucket]->Pairs();
    std::size_t kept = 0;
    for (CXmlNameBucket::Pair& pair : pairs) {
        const std::size_t home = BucketHash(pair.name.View()) % bucket_count_;
        if (home == bucket) {
            std::swap(pairs[kept++], pair);
            continue;
        }
        CXmlNameBucket* other = BucketAt(home);
        if (other == nullptr || !other->Add(std::move(pair))) {
            return false;
        }
    }
    pairs.Shorten(kept);
    return buckets_[bucket]->RenewPlaces();
}

} // namespace partkeep
