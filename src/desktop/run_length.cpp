#include "desktop/run_length.h"

#include <algorithm>

namespace partkeep {

namespace {

constexpr std::int16_t left_out = -1;

// What the second byte of a code means when the first one is 0; from 3 on it counts the pixels that follow.
enum Escape : unsigned { EndOfLine = 0, EndOfBitmap = 1, Delta = 2 };

class CRunExpander {
public:
    CRunExpander(const DibFigures& figures, std::span<const std::byte> codes)
        : codes_(codes), width_(static_cast<std::size_t>(figures.width)),
          height_(static_cast<std::size_t>(figures.height)), nibbles_(figures.compression == DibCompression::Rle4),
          indexes_(width_ * height_, left_out)
    {
    }

    std::vector<std::int16_t> Expand()
    {
        while (y_ < height_ && position_ + 2 <= codes_.size()) {
            const unsigned count = NextByte();
            const unsigned value = NextByte();
            if (count != 0) {
                PutRun(count, value);
            } else if (!ObeyEscape(value)) {
                break;
            }
        }
        return std::move(indexes_);
    }

private:
    unsigned NextByte() { return std::to_integer<unsigned>(codes_[position_++]); }

    void Put(unsigned index)
    {
        if (x_ < width_) {
            indexes_[y_ * width_ + x_++] = static_cast<std::int16_t>(index);
        }
    }

    // Of two pixels in a byte the upper half comes first.
    void PutFrom(unsigned byte, unsigned place)
    {
        if (!nibbles_) {
            Put(byte);
        } else {
            Put(place % 2 == 0 ? byte >> 4 : byte & 0xF);
        }
    }

    void PutRun(unsigned count, unsigned value)
    {
        for (unsigned place = 0; place < count; ++place) {
            PutFrom(value, place);
        }
    }

    // False at the end of the picture.
    bool ObeyEscape(unsigned escape)
    {
        switch (escape) {
        case EndOfLine:
            x_ = 0;
            ++y_;
            return true;
        case EndOfBitmap:
            return false;
        case Delta:
            return Skip();
        default:
            return PutLiteral(escape);
        }
    }

    bool Skip()
    {
        if (position_ + 2 > codes_.size()) {
            return false;
        }
        x_ = std::min(width_, x_ + NextByte());
        y_ += NextByte();
        return true;
    }

    // The bytes are padded to an even number.
    bool PutLiteral(unsigned count)
    {
        const std::size_t bytes = nibbles_ ? (count + 1) / 2 : count;
        if (position_ + bytes > codes_.size()) {
            return false;
        }
        for (unsigned place = 0; place < count; ++place) {
            const auto byte = std::to_integer<unsigned>(codes_[position_ + (nibbles_ ? place / 2 : place)]);
            PutFrom(byte, place);
        }
        position_ += bytes + bytes % 2;
        return true;
    }

    std::span<const std::byte> codes_;
    std::size_t width_;
    std::size_t height_;
    bool nibbles_;
    std::vector<std::int16_t> indexes_;
    std::size_t position_ = 0;
    std::size_t x_ = 0;
    std::size_t y_ = 0;
};

} // namespace

std::vector<std::int16_t> ExpandRuns(const DibFigures& figures, std::span<const std::byte> codes)
{
    return CRunExpander(figures, codes).Expand();
}

} // namespace partkeep
