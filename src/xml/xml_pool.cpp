#include "xml/xml_memory.h"

#include <cstdint>
#include <new>

namespace partkeep {

namespace {

// Pages are aligned, so that a piece finds its page. Small pieces are cut from one page, one behind the other, and
// blocks from pages of their own; a page goes back as a whole when its last piece has gone: nodes die with their
// document, hence a list of free pieces would cost more than it would save.
constexpr std::size_t page_alignment = std::size_t{64} * 1024;
// A little short of the alignment, which leaves the heap's own header room between two pages.
constexpr std::size_t page_size = page_alignment - 64;
constexpr std::size_t largest_piece = page_size / 8;
// Kept for the next document rather than returned: 4 MB at most.
constexpr std::uint32_t most_spare_pages = 64;

struct Page {
    Page* next = nullptr;
    std::size_t live = 0;
};

std::byte* StartOf(Page* page)
{
    return reinterpret_cast<std::byte*>(page) + sizeof(Page);
}

void FreePage(void* page)
{
    ::operator delete (page, std::align_val_t{page_alignment});
}

class CXmlPool {
public:
    constexpr CXmlPool() = default;
    CXmlPool(const CXmlPool&) = delete;
    CXmlPool& operator=(const CXmlPool&) = delete;
    // A module may be unloaded from a host that lives on.
    ~CXmlPool();

    void* Take(std::size_t size, std::size_t alignment);
    void Give(void* memory, std::size_t size);

    // Null when there is no memory.
    void* TakePage();
    void GivePage(void* memory);

private:
    bool NextPage();
    void Retire(Page* page);

    Page* current_ = nullptr;
    std::byte* at_ = nullptr;
    std::byte* end_ = nullptr;
    Page* spare_ = nullptr;
    std::uint32_t spare_count_ = 0;
    bool closed_ = false;
};

CXmlPool::~CXmlPool()
{
    closed_ = true;
    if (current_ != nullptr && current_->live == 0) {
        FreePage(current_);
    }
    // A page still in use is returned by whoever frees its last piece.
    current_ = nullptr;
    at_ = end_ = nullptr;
    while (spare_ != nullptr) {
        Page* page = spare_;
        spare_ = page->next;
        FreePage(page);
    }
}

void* CXmlPool::Take(std::size_t size, std::size_t alignment)
{
    auto padding = (alignment - reinterpret_cast<std::uintptr_t>(at_) % alignment) % alignment;
    if (static_cast<std::size_t>(end_ - at_) < size + padding) {
        if (!NextPage()) {
            return nullptr;
        }
        padding = 0; // a page starts well aligned
    }
    std::byte* piece = at_ + padding;
    at_ = piece + size;
    ++current_->live;
    return piece;
}

void* CXmlPool::TakePage()
{
    if (Page* page = spare_; page != nullptr) {
        spare_ = page->next;
        --spare_count_;
        return page;
    }
    return ::operator new (page_size, std::align_val_t{page_alignment}, std::nothrow);
}

void CXmlPool::GivePage(void* memory)
{
    if (closed_ || spare_count_ == most_spare_pages) {
        FreePage(memory);
        return;
    }
    spare_ = new (memory) Page{spare_};
    ++spare_count_;
}

bool CXmlPool::NextPage()
{
    void* memory = TakePage();
    if (memory == nullptr) {
        return false;
    }
    current_ = new (memory) Page;
    at_ = StartOf(current_);
    end_ = static_cast<std::byte*>(memory) + page_size;
    return true;
}

void CXmlPool::Give(void* memory, std::size_t size)
{
    auto* piece = static_cast<std::byte*>(memory);
    auto* page = reinterpret_cast<Page*>(piece - reinterpret_cast<std::uintptr_t>(piece) % page_alignment);
    --page->live;
    if (page->live == 0) {
        Retire(page);
    } else if (piece + size == at_) {
        at_ = piece; // the newest piece: texts and tables that a caller asks for and drops use one place
    }
}

void CXmlPool::Retire(Page* page)
{
    if (page == current_) {
        at_ = StartOf(page);
    } else {
        GivePage(page);
    }
}

constinit CXmlPool pool;

// The same answer when a piece is taken as when it is given back.
bool IsPoolPiece(std::size_t size)
{
    return size <= largest_piece;
}

} // namespace

// An eighth of a page, when parsed.
const std::size_t xml_least_for_own_pages = 4096;

void* AllocateXml(std::size_t size, std::size_t alignment)
{
    return IsPoolPiece(size) ? pool.Take(size, alignment) : ::operator new(size, std::nothrow);
}

void FreeXml(void* memory, std::size_t size)
{
    if (memory == nullptr) {
        return;
    }
    if (IsPoolPiece(size)) {
        pool.Give(memory, size);
    } else {
        ::operator delete(memory);
    }
}

XmlRoom TakeXmlRoom(std::size_t size)
{
    const bool alone = !IsPoolPiece(size);
    void* memory = alone ? ::operator new(sizeof(XmlHead) + size, std::nothrow) : pool.TakePage();
    if (memory == nullptr) {
        return {};
    }
    auto* head = new (memory) XmlHead;
    head->size = alone ? size : 0;
    return {head, static_cast<std::byte*>(memory) + (alone ? sizeof(XmlHead) + size : page_size)};
}

void GiveXmlRoom(XmlHead* head)
{
    if (head->size != 0) {
        ::operator delete(head);
    } else {
        pool.GivePage(head);
    }
}

} // namespace partkeep
