#include "tests/support/dib_sample.h"

#include "controls/dib_helpers.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

namespace partkeep {

namespace {

constexpr std::int64_t rle8 = 1;
constexpr std::int64_t rle4 = 2;
constexpr std::int64_t bit_fields = 3;

// By header and compression, the depths.
const std::tuple<std::int64_t, std::int64_t, std::vector<std::int64_t>> drawn_kinds[] = {
    {12, 0, {1, 4, 8, 16, 24, 32}}, {40, 0, {1, 4, 8, 16, 24, 32}}, {40, rle8, {8}}, {40, rle4, {4}},
    {40, bit_fields, {16, 32}},
};

const std::pair<std::int64_t, std::array<std::uint32_t, 3>> mask_kinds[] = {
    {16, {0xF800, 0x7E0, 0x1F}},        {16, {0xF00, 0xF0, 0xF}}, {32, {0xFF, 0xFF00, 0xFF0000}},
    {32, {0x3FF00000, 0xFFC00, 0x3FF}}, {16, {0xE00, 0x30, 0x1}}, // the last one: not every device fills eight bits
                                                                  // from fewer than four
};

const std::pair<std::int64_t DibForm::*, std::vector<std::int64_t>> edges[] = {
    {&DibForm::header_bytes, {0, 11, 13, 16, 39, 41, 52, 56, 64, 108, 124, 0x7FFFFFFF, 0xFFFFFFFF}},
    {&DibForm::bits, {0, 1, 2, 4, 7, 8, 15, 16, 24, 31, 32, 33, 64, 0x101}},
    {&DibForm::compression, {0, 1, 2, 3, 4, 5, 6, 0xFFFFFFFF}},
    {&DibForm::width, {1, 0, -1, -11, 0x40000000, 0x40000001, 0x7FFFFFFF, 0x80000000}}, // rows of 2^32 bytes among them
    {&DibForm::height, {1, 0, -1, -7, 9, 0x1000000, 0x7FFFFFFF, 0x80000000}},
    {&DibForm::planes, {0, 2, 0x101}},
    {&DibForm::image_bytes, {0, 0x10000, 0xFFFFFFFF}},
    {&DibForm::colors_used, {1, 2, 256, 257, 0x4001, 0xFFFF, 0x10002, 0xFFFF0000, 0xFFFFFFFF}},
};

bool IsCore(const DibForm& form)
{
    return form.header_bytes == dib_core_header_bytes;
}

bool IsCoded(const DibForm& form)
{
    return !IsCore(form) && form.bits <= 8 && (form.compression == rle8 || form.compression == rle4);
}

bool HasMasks(const DibForm& form)
{
    return !IsCore(form) && form.compression == bit_fields;
}

std::int64_t TableEntries(const DibForm& form)
{
    const std::int64_t told = IsCore(form) ? 0 : form.colors_used;
    return told == 0 && form.bits <= 8 ? std::int64_t{1} << form.bits : told;
}

std::int64_t EntryBytes(const DibForm& form)
{
    return IsCore(form) ? 3 : 4;
}

// Cut to 16 bits, as those who read the header count.
std::uint16_t TableBytes(const DibForm& form)
{
    return static_cast<std::uint16_t>(static_cast<std::uint16_t>(TableEntries(form)) * EntryBytes(form));
}

bool IsDrawnKind(const DibForm& form)
{
    return std::ranges::any_of(drawn_kinds, [&form](const auto& kind) {
        const auto& [header_bytes, compression, depths] = kind;
        return header_bytes == form.header_bytes && (IsCore(form) || compression == form.compression) &&
               std::ranges::count(depths, form.bits) != 0;
    });
}

// No file here has more than 64 columns or rows, whatever its header tells.
bool IsDrawn(const DibForm& form)
{
    const bool extents = form.width > 0 && form.width <= 64 && form.height != 0 && std::abs(form.height) <= 64;
    const bool rows = form.height > 0 || (!IsCore(form) && !IsCoded(form));
    const bool coded = !IsCoded(form) || form.image_bytes == -1;
    const bool table = TableBytes(form) >= std::min<std::int64_t>(TableEntries(form), 256) * EntryBytes(form);
    return IsDrawnKind(form) && extents && rows && coded && table && form.planes == 1;
}

class FormWriter {
public:
    explicit FormWriter(const DibForm& form) : form_(form) {}

    SampleFile Write()
    {
        const auto laid_out = std::clamp<std::int64_t>(form_.header_bytes, IsCore(form_) ? 12 : 40, 124);
        file_.bytes.resize(dib_file_header_bytes + static_cast<std::size_t>(laid_out));
        AppendRandom(HasMasks(form_) ? 12 : 0);
        AppendRandom(TableBytes(form_));
        file_.pixel_offset = file_.bytes.size();
        IsCoded(form_) ? AppendRuns() : AppendRows();
        PutHeader();
        file_.picture = IsDrawn(form_) ? DecodePlainly(file_.View()) : Picture(columns_, rows_);
        return std::move(file_);
    }

private:
    void AppendRandom(std::size_t count)
    {
        std::generate_n(std::back_inserter(file_.bytes), count, [this] { return static_cast<std::byte>(random_()); });
    }

    void AppendRows() { AppendRandom(static_cast<std::size_t>((columns_ * form_.bits + 31) / 32 * 4 * rows_)); }

    // Each row: three pixels one by one, where there are more, then a run to the row's end.
    void AppendRuns()
    {
        for (int row = 0; row < rows_; ++row) {
            const int plain = columns_ > 3 ? 3 : 0;
            if (plain != 0) {
                file_.bytes.insert(file_.bytes.end(), {std::byte{0}, std::byte{3}});
                AppendRandom(form_.bits == 4 ? 2 : 4);
            }
            file_.bytes.insert(file_.bytes.end(), {static_cast<std::byte>(columns_ - plain), std::byte{0x29}, {}, {}});
        }
    }

    void PutHeader()
    {
        file_.Put(0, static_cast<std::uint32_t>(form_.header_bytes));
        if (IsCore(form_)) {
            const std::int64_t fields[] = {form_.width, form_.height, form_.planes, form_.bits};
            for (std::size_t at = 0; at < 4; ++at) {
                file_.Put(4 + 2 * at, static_cast<std::uint16_t>(fields[at]));
            }
            return;
        }
        const auto there = static_cast<std::int64_t>(file_.bytes.size() - file_.pixel_offset);
        file_.Put(4, static_cast<std::int32_t>(form_.width));
        file_.Put(8, static_cast<std::int32_t>(form_.height));
        file_.Put(12, static_cast<std::uint16_t>(form_.planes));
        file_.Put(14, static_cast<std::uint16_t>(form_.bits));
        file_.Put(16, static_cast<std::uint32_t>(form_.compression));
        file_.Put(20, static_cast<std::uint32_t>(form_.image_bytes == -1 ? there : form_.image_bytes));
        file_.Put(32, static_cast<std::uint32_t>(form_.colors_used));
        if (HasMasks(form_)) {
            file_.Put(40, form_.masks);
        }
    }

    const DibForm form_;
    std::mt19937 random_{static_cast<unsigned>(form_.bits)};
    SampleFile file_;
    int columns_ = form_.width > 0 && form_.width <= 64 ? static_cast<int>(form_.width) : 11;
    int rows_ = std::abs(form_.height) <= 64 ? static_cast<int>(std::abs(form_.height)) : 7;
};

} // namespace

std::string DibForm::Label() const
{
    std::string label = "bits, header, height, colours, compression, width, planes, bytes, masks:";
    for (const std::int64_t number :
         {bits, header_bytes, height, colors_used, compression, width, planes, image_bytes, std::int64_t{masks[0]}}) {
        label += ' ' + std::to_string(number);
    }
    return label;
}

std::vector<DibForm> DrawnForms()
{
    std::vector<DibForm> forms;
    const auto add = [&forms](DibForm form) {
        for (const std::int64_t height : {7, -7}) {
            for (const std::int64_t colors : {0, 5, 300}) {
                form.height = height;
                form.colors_used = colors;
                if (IsDrawn(form) && (!IsCore(form) || colors == 0)) {
                    forms.push_back(form);
                }
            }
        }
    };
    for (const auto& [header_bytes, compression, depths] : drawn_kinds) {
        for (const std::int64_t bits : depths) {
            for (const auto& [mask_bits, masks] : mask_kinds) {
                if (compression == bit_fields ? mask_bits == bits : &masks == &mask_kinds[0].second) {
                    add({.bits = bits, .header_bytes = header_bytes, .compression = compression, .masks = masks});
                }
            }
        }
    }
    return forms;
}

void ForEachForm(const std::function<void(const DibForm& form, bool drawn)>& use)
{
    for (const DibForm& drawn : DrawnForms()) {
        use(drawn, true);
        for (const auto& [field, values] : edges) {
            for (const std::int64_t value : values) {
                DibForm form = drawn;
                form.*field = value;
                if (IsCore(form)) { // whose fields have 16 bits
                    form.width &= 0xFFFF;
                    form.height &= 0xFFFF;
                }
                use(form, IsDrawn(form));
            }
        }
    }
}

DibView SampleFile::View() const
{
    const std::span all(bytes);
    return {all.subspan(dib_file_header_bytes, pixel_offset - dib_file_header_bytes), all.subspan(pixel_offset)};
}

SampleFile MakeSampleFile(const DibForm& form)
{
    return FormWriter(form).Write();
}

TestBlock::TestBlock(std::span<const std::byte> bytes) : handle(AllocateBlock(bytes.size()))
{
    const CBlockLock lock(handle);
    std::copy(bytes.begin(), bytes.end(), static_cast<std::byte*>(lock.Address()));
}

namespace {

// What stands in the colour table of the bitmaps whose pixels are written out.
constexpr std::uint32_t Color(std::uint32_t index)
{
    return 0x804000 + 0x10101 * index;
}

SampleFile FileOf(const DibForm& form, const std::vector<std::uint8_t>& stored)
{
    SampleFile file = MakeSampleFile(form);
    for (std::size_t index = 0; form.bits <= 8 && index < std::size_t{1} << form.bits; ++index) {
        const std::uint32_t color = Color(static_cast<std::uint32_t>(index));
        std::memcpy(file.bytes.data() + dib_file_header_bytes + form.header_bytes + index * EntryBytes(form), &color,
                    3);
    }
    file.bytes.resize(file.pixel_offset);
    std::ranges::transform(stored, std::back_inserter(file.bytes), [](std::uint8_t byte) { return std::byte{byte}; });
    if (!IsCore(form)) {
        file.Put(20, static_cast<std::uint32_t>(stored.size()));
    }
    return file;
}

// Held against no decoder: pixels written out, from the top row down.
void ExpectShowsWhatIsWrittenOut(const PaintOnCanvas& paint)
{
    constexpr auto color = Color;
    const std::tuple<DibForm, std::vector<std::uint8_t>, std::vector<std::uint32_t>> rows[] = {
        {{.bits = 1, .height = 1, .width = 3}, {0x50, 0, 0, 0}, {color(0), color(1), color(0)}},
        {{.bits = 1, .header_bytes = 12, .height = 1, .width = 3}, {0x50, 0, 0, 0}, {color(0), color(1), color(0)}},
        {{.bits = 4, .height = 1, .width = 3}, {0x12, 0x30, 0, 0}, {color(1), color(2), color(3)}},
        {{.bits = 8, .height = 2, .width = 1}, {5, 0, 0, 0, 6, 0, 0, 0}, {color(6), color(5)}},
        {{.bits = 8, .height = -2, .width = 1}, {5, 0, 0, 0, 6, 0, 0, 0}, {color(5), color(6)}},
        {{.bits = 16, .height = 1, .width = 3}, {0, 0x7C, 0xE0, 3, 1, 0, 0, 0}, {0xFF0000, 0xFF00, 8}},
        {{.height = 1, .width = 2}, {1, 2, 3, 4, 5, 6, 0, 0}, {0x30201, 0x60504}},
        {{.bits = 32, .height = 1, .width = 1}, {1, 2, 3, 0x99}, {0x30201}},
        {{.bits = 16, .height = 1, .compression = bit_fields, .width = 3, .masks = {0xF800, 0x7E0, 0x1F}},
         {0, 0xF8, 0x20, 0, 0x1F, 0, 0, 0},
         {0xFF0000, 0x400, 0xFF}},
        {{.bits = 32, .height = 1, .compression = bit_fields, .width = 1, .masks = {0xFF, 0xFF00, 0xFF0000}},
         {1, 2, 3, 0},
         {0x10203}},
        // Three pixels one by one and a run that is too long; then one, two left out, another, and the end before more.
        {{.bits = 8, .height = 2, .compression = rle8, .width = 4},
         {0, 3, 2, 1, 2, 0, 9, 1, 0, 0, 1, 5, 0, 2, 2, 0, 1, 6, 0, 1, 4, 7},
         {color(5), untouched, untouched, color(6), color(2), color(1), color(2), color(1)}},
        {{.bits = 4, .height = 1, .compression = rle4, .width = 5},
         {3, 0x12, 0, 3, 0x34, 0x50, 0, 1},
         {color(1), color(2), color(1), color(3), color(4)}},
    };
    for (const auto& [form, stored, pixels] : rows) {
        const TestBlock block(FileOf(form, stored).bytes);
        const int width = static_cast<int>(form.width);
        const int height = static_cast<int>(std::abs(form.height));
        const Rect whole{0, 0, width, height};
        const auto draw = [&, &form = form](IDeviceContext& context) {
            EXPECT_GT(PaintDIB(context, &whole, block.handle, &whole, nullptr), 0) << form.Label();
        };
        RasterContext raster(width, height);
        draw(raster);
        EXPECT_EQ(raster.canvas.pixels, pixels) << form.Label();
        EXPECT_EQ(paint(width, height, draw).pixels, pixels) << form.Label();
    }
}

} // namespace

void ExpectShowsAsRaster(std::span<const DibForm> shown_forms, const PaintOnCanvas& paint)
{
    ExpectShowsWhatIsWrittenOut(paint);
    // The bitmap's size is odd, so that no centre of a target pixel falls between two pixels: devices differ there.
    constexpr Rect whole{0, 0, 11, 7};
    constexpr std::tuple<const char*, Rect, Rect> rows[] = {
        {"whole", {2, 3, 13, 10}, whole},          {"part", {2, 3, 7, 7}, {3, 1, 8, 5}},
        {"off the canvas", {-4, -2, 7, 5}, whole}, {"from outside", {1, 1, 12, 8}, {-2, -2, 9, 5}},
        {"enlarged", {1, 2, 30, 26}, whole},       {"enlarged off the canvas", {-5, -6, 45, 43}, whole},
        {"reduced", {4, 4, 15, 10}, whole}, // by one row, where devices still agree
    };
    for (const DibForm& form : shown_forms) {
        const TestBlock block(MakeSampleFile(form).bytes);
        for (const auto& [label, target, source] : rows) {
            SCOPED_TRACE(form.Label() + ", " + label);
            RasterContext raster(32, 28);
            PaintDIB(raster, &target, block.handle, &source, nullptr);
            std::int32_t result = 0;
            const Picture shown = paint(32, 28, [&, &target = target, &source = source](IDeviceContext& context) {
                result = PaintDIB(context, &target, block.handle, &source, nullptr);
            });
            EXPECT_EQ(shown.pixels, raster.canvas.pixels);
            EXPECT_GT(result, 0);
        }
    }
}

} // namespace partkeep
