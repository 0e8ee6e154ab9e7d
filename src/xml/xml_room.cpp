#include "xml/xml_room.h"

#include <new>
#include <utility>

namespace partkeep {

namespace {

constexpr std::size_t largest_block = 0xFFFFFFFFU - 64; // with its head and reach, sizes stay within 32 bits

// The tree that is being built.
constinit XmlTree* growing = nullptr;

// Gives back what waits for the next block: a module may be unloaded from a host that lives on.
struct CCursorCloser {
    ~CCursorCloser()
    {
        XmlHead* head = std::exchange(xml_cursor, {}).head;
        if (head != nullptr && head->live == 0 && head->held == 0) {
            GiveXmlRoom(head);
        }
    }
};
const CCursorCloser cursor_closer;

bool IsHeld(const XmlTree& tree)
{
    for (const XmlHead* head = tree.heads; head != nullptr; head = head->next) {
        if (head->held != 0) {
            return true;
        }
    }
    return false;
}

void FreeTree(XmlTree* tree)
{
    FreeXml(tree, sizeof *tree);
}

} // namespace

constinit XmlCursor xml_cursor;

std::byte* CutFromNewRoom(std::size_t size)
{
    if (size > largest_block) {
        return nullptr;
    }
    const XmlRoom room = TakeXmlRoom(RoomFor(size));
    if (room.head == nullptr) {
        return nullptr;
    }
    if (growing != nullptr) {
        room.head->tree = growing;
        room.head->next = std::exchange(growing->heads, room.head);
        growing->room += static_cast<std::size_t>(room.end - RoomOf(room.head));
    }
    std::byte* block = PutReach(RoomOf(room.head), room.head);
    std::byte* behind = RoomOf(room.head) + RoomFor(size);
    // What is left behind then has blocks or is held: room without either is all free, and no new one has more.
    if (room.end - behind > xml_cursor.end - xml_cursor.at) {
        xml_cursor = {behind, room.end, room.head};
    }
    return block;
}

void ReleaseRoom(XmlHead* head)
{
    if (head == xml_cursor.head) {
        xml_cursor.at = RoomOf(head);
    } else if (head->tree == nullptr) {
        GiveXmlRoom(head);
    }
}

CXmlTreeBuilder::CXmlTreeBuilder(std::size_t expected)
{
    if (expected < xml_least_for_own_pages || growing != nullptr) {
        return;
    }
    void* memory = AllocateXml(sizeof(XmlTree), alignof(XmlTree));
    if (memory == nullptr) {
        failed_ = true;
        return;
    }
    growing = tree_ = new (memory) XmlTree;
    outer_ = std::exchange(xml_cursor, {});
    if (outer_.head != nullptr) {
        ++outer_.head->held; // it must still be there afterwards
    }
}

CXmlTreeBuilder::~CXmlTreeBuilder()
{
    Finish(nullptr);
}

void CXmlTreeBuilder::Finish(std::byte* root)
{
    if (tree_ == nullptr) {
        return;
    }
    XmlTree* tree = std::exchange(tree_, nullptr);
    growing = nullptr;
    xml_cursor = outer_;
    if (outer_.head != nullptr) {
        Unhold(outer_.head);
    }
    tree->root = root;
    if (root == nullptr && tree->heads != nullptr) {
        BreakTree(tree->heads);
    } else if (root == nullptr) {
        FreeTree(tree);
    }
}

std::byte* AllocateXmlTreeBlock(std::size_t size)
{
    std::byte* block = AllocateXmlBlock(size);
    if (block == nullptr || HeadOf(block)->size == 0 || HeadOf(block)->tree != nullptr) {
        return block;
    }
    // Without memory for that it stays ordinary.
    if (void* memory = AllocateXml(sizeof(XmlTree), alignof(XmlTree)); memory != nullptr) {
        HeadOf(block)->tree = new (memory) XmlTree{block, HeadOf(block), size};
    }
    return block;
}

// What was read is linked, and takes more than twice the room of its text; a copy takes about as much.
std::size_t GuessLengthOf(std::byte* block)
{
    const XmlTree* tree = HeadOf(block)->tree;
    if (tree == nullptr || tree->root != block) {
        return 0;
    }
    return tree->heads->next == nullptr ? tree->room : tree->room / 2;
}

void BreakTree(XmlHead* head)
{
    XmlTree* tree = head->tree;
    if (tree == growing) {
        return;
    }
    for (XmlHead* at = tree->heads; at != nullptr;) {
        XmlHead* next = std::exchange(at->next, nullptr);
        at->tree = nullptr;
        if (at->live == 0 && at->held == 0) {
            GiveXmlRoom(at);
        }
        at = next;
    }
    FreeTree(tree);
}

bool DropTree(std::byte* root)
{
    XmlTree* tree = HeadOf(root)->tree;
    if (tree->root != root || IsHeld(*tree)) {
        return false;
    }
    for (XmlHead* at = tree->heads; at != nullptr;) {
        GiveXmlRoom(std::exchange(at, at->next));
    }
    FreeTree(tree);
    return true;
}

} // namespace partkeep
