#include "watched_memory.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>

#include "xml/xml_memory.h"

namespace {

constexpr std::size_t size_room = alignof(std::max_align_t);
constexpr std::size_t shared_room = 600;

bool fail_once = false;

} // namespace

std::size_t watched_memory::fail_from = 0;
std::size_t watched_memory::asked = 0;
std::size_t watched_memory::live_pieces = 0;
bool watched_memory::share_rooms = false;

using namespace watched_memory;

void watched_memory::FailFrom(std::size_t first, bool once)
{
    asked = 0;
    fail_from = first;
    fail_once = once;
}

const std::size_t partkeep::xml_least_for_own_pages = 0;

partkeep::XmlRoom partkeep::TakeXmlRoom(std::size_t size)
{
    const bool shared = share_rooms && size < shared_room;
    const std::size_t taken = shared ? shared_room : size;
    void* memory = AllocateXml(sizeof(XmlHead) + taken, alignof(XmlHead));
    if (memory == nullptr) {
        return {};
    }
    auto* head = new (memory) XmlHead;
    head->size = shared ? 0 : size;
    return {head, reinterpret_cast<std::byte*>(head + 1) + taken};
}

void partkeep::GiveXmlRoom(XmlHead* head)
{
    FreeXml(head, sizeof(XmlHead) + (head->size == 0 ? shared_room : head->size));
}

void* partkeep::AllocateXml(std::size_t size, std::size_t)
{
    ++asked;
    const bool fails = fail_from != 0 && (fail_once ? asked == fail_from : asked >= fail_from);
    auto* memory = fails ? nullptr : static_cast<std::byte*>(std::malloc(size_room + size));
    if (memory == nullptr) {
        return nullptr;
    }
    std::memcpy(memory, &size, sizeof size);
    std::memset(memory + size_room, 0xA5, size);
    ++live_pieces;
    return memory + size_room;
}

void partkeep::FreeXml(void* memory, std::size_t size)
{
    if (memory == nullptr) {
        return;
    }
    std::byte* start = static_cast<std::byte*>(memory) - size_room;
    std::size_t taken = 0;
    std::memcpy(&taken, start, sizeof taken);
    if (taken != size) {
        std::fprintf(stderr, "%zu bytes taken, %zu given back\n", taken, size);
        std::abort();
    }
    --live_pieces;
    std::memset(start, 0xA5, size_room + size);
    std::free(start);
}
