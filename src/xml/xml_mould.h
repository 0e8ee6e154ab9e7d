// Makes the blocks of one document in quick succession. What is the same in all of them stands packed here and goes
// over in copies of fixed length, after which the fields that differ are set. Short names and texts go over in wide
// copies, which may reach beyond them, but never out of the room nor out of the text they come from.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "xml/xml_block.h"

namespace partkeep {

class CXmlMould {
public:
    explicit CXmlMould(std::uint32_t code_page) : code_page_(code_page)
    {
        PackTextLeaf<xml_address_width>(leaf_, {}, {}, code_page);
        PackElement<xml_address_width>(element_, {}, code_page);
        AddReference(leaf_);
    }

    // Hangs a new text leaf into an empty slot, which becomes its link; false when there is no memory. From `name` and
    // `text` up to `readable` everything can be read.
    [[nodiscard]] bool HangText(std::byte*& slot, std::string_view name, std::string_view text,
                                const char* readable) const
    {
        std::byte* block = CutXmlBlock(XmlPlaces::TextLeafSize(name.size(), text.size()), xml_wide);
        if (block != nullptr) {
            std::memcpy(block, leaf_, leaf_front);
            PutField(block + XmlPlaces::root + XmlPlaces::head, static_cast<std::uint32_t>(text.size()));
            std::byte* link = PutRun(block + leaf_front, text, readable);
            std::memcpy(link, leaf_ + leaf_front, XmlPlaces::first_name);
            PutName(link, name, readable);
        } else if ((block = MakeTextBlock(name, text, code_page_)) != nullptr) {
            AddReference(block);
        } else {
            return false;
        }
        HangBlock(slot, block);
        slot = block + leaf_front + text.size();
        return true;
    }
    // As MakeElementBlock.
    [[nodiscard]] std::byte* MakeElement(std::string_view name, const char* readable) const
    {
        std::byte* block = CutXmlBlock(XmlPlaces::ElementSize(name.size()), xml_wide);
        if (block == nullptr) {
            return MakeElementBlock(name, code_page_);
        }
        std::memcpy(block, element_, element_front + XmlPlaces::first_name);
        PutName(block + element_front, name, readable);
        return block;
    }

private:
    static constexpr std::size_t leaf_front = XmlPlaces::root + XmlPlaces::counted;
    static constexpr std::size_t element_front = XmlPlaces::root + XmlPlaces::new_element;

    static std::byte* PutRun(std::byte* at, std::string_view bytes, const char* readable)
    {
        if (bytes.size() <= xml_wide && static_cast<std::size_t>(readable - bytes.data()) >= xml_wide) {
            std::memcpy(at, bytes.data(), xml_wide);
        } else {
            CopyShort(at, bytes.data(), bytes.size());
        }
        return at + bytes.size();
    }
    // The rest of a block, from its root's link on, which stands there already with the beginning of a name array.
    static void PutName(std::byte* link, std::string_view name, const char* readable)
    {
        std::byte* names = link + xml_address_width;
        PutField(names + XmlPlaces::head, static_cast<std::uint32_t>(name.size() + 4 + xml_address_width));
        PutField(names + XmlPlaces::counted, static_cast<std::uint32_t>(name.size()));
        xml_pack::Zeros<xml_address_width>(PutRun(link + XmlPlaces::first_name, name, readable));
    }

    std::uint32_t code_page_;
    std::byte leaf_[XmlPlaces::TextLeafSize(0, 0)];
    std::byte element_[XmlPlaces::ElementSize(0)];
};

} // namespace partkeep
