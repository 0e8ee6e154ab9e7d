// Goes through the items of an array node: those that stand in it, then those in its extension cells.
#pragma once

#include <string_view>

#include "xml/xml_block.h"
#include "xml/xml_value.h"

namespace partkeep {

class CXmlItems {
public:
    explicit CXmlItems(const std::byte* array)
        : kind_(ItemKind(NodeKind(array))), inline_end_(LinkOf(array) - xml_address_width),
          item_(array + XmlPlaces::counted)
    {
        FollowExtension();
    }

    [[nodiscard]] bool AtEnd() const { return item_ == nullptr; }
    // True once the item lies in an extension cell.
    [[nodiscard]] bool IsExtension() const { return inline_end_ == nullptr; }
    // The item's first byte: of a text, its length.
    [[nodiscard]] const std::byte* Item() const { return item_; }
    [[nodiscard]] XmlKind Kind() const { return kind_; }
    [[nodiscard]] std::size_t Width() const
    {
        return kind_ == XmlKind::Text ? 4 + LoadField<std::uint32_t>(item_) : ValueWidth(kind_);
    }
    // Of an array of texts.
    [[nodiscard]] std::string_view Text() const
    {
        return {reinterpret_cast<const char*>(item_ + 4), LoadField<std::uint32_t>(item_)};
    }

    [[nodiscard]] XmlScalar Scalar() const
    {
        return kind_ == XmlKind::Text ? XmlScalar{kind_, item_ + 4, LoadField<std::uint32_t>(item_)}
                                      : XmlScalar{kind_, item_};
    }

    void Next()
    {
        item_ += Width();
        if (IsExtension()) {
            item_ = LoadField<const std::byte*>(item_);
        } else {
            FollowExtension();
        }
    }

private:
    void FollowExtension()
    {
        if (item_ == inline_end_) {
            item_ = LoadField<const std::byte*>(inline_end_);
            inline_end_ = nullptr;
        }
    }

    XmlKind kind_;
    const std::byte* inline_end_;
    const std::byte* item_;
};

} // namespace partkeep
