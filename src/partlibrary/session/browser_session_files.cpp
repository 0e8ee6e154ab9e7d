// The session's operations that read a part and write its files.
#include "partlibrary/session/browser_session.h"

#include "partlibrary/library/library_names.h"
#include "partlibrary/library/library_text.h"
#include "partlibrary/session/staged_files.h"

#include <algorithm>
#include <chrono>
#include <cstring>

namespace partkeep {

namespace {

constexpr std::int32_t status_ok = 0;
constexpr std::int32_t status_failed = -1;
constexpr std::chrono::seconds again_within{2};

} // namespace

bool CBrowserSession::SetTargetFolder(std::u16string_view folder)
{
    target_folder_ = std::u16string(folder);
    return true;
}

bool CBrowserSession::SetDataKind(std::int16_t kind_mask)
{
    data_kind_ = kind_mask;
    return true;
}

std::optional<PartRow> CBrowserSession::FindByPath(IPartLibrary& library, std::u16string_view part_path)
{
    const std::size_t separator = part_path.rfind(u'\\');
    const bool in_root = separator == std::u16string_view::npos;
    const QString folder = in_root ? QString() : FolderPath(FromWide(part_path.substr(0, separator)));
    auto part = library.FindPart(folder, FromWide(in_root ? part_path : part_path.substr(separator + 1)));
    if (!part) {
        SetProblem(library.Problem());
    }
    return part;
}

std::optional<PartRow> CBrowserSession::ReadPartAttributes(std::u16string_view server, std::u16string_view part_path)
{
    const auto library = LibraryOf(server);
    return library != nullptr ? FindByPath(*library, part_path) : std::nullopt;
}

bool CBrowserSession::CopyPartFiles(std::u16string_view server, std::u16string_view part_path)
{
    const auto library = LibraryOf(server);
    const auto part = library != nullptr ? FindByPath(*library, part_path) : std::nullopt;
    if (!part) {
        return false;
    }
    const std::size_t number = std::min(asked_ + 1, std::max<std::size_t>(selection_.size(), 1));
    const bool goes_on = number >= copy_.number && selection_.size() == copy_.of && number > 1;
    copy_ = {part->name, number, std::max<std::size_t>(selection_.size(), 1), goes_on ? copy_.bytes : 0};
    if (pane_ != nullptr) {
        pane_->CopyStarted(copy_);
    }
    const SlotSet slots = SlotsOfMask(data_kind_);
    const CopyProgress begun = copy_;
    bool staged = StageFiles(*library, *part, slots, &copy_);
    const auto until = std::chrono::steady_clock::now() + again_within;
    while (!staged && library->Problem().fault == LibraryFault::NoAnswer && !library->SilentSince().isValid() &&
           std::chrono::steady_clock::now() < until) { // lost in the middle, not waited for
        copy_ = begun;
        staged = StageFiles(*library, *part, slots, &copy_) && SetProblem({});
    }
    if (pane_ != nullptr) {
        pane_->CopyEnded();
    }
    if (staged && library == library_) {
        ExpectRest(part->id);
    }
    return staged;
}

// Who copies a part of the selection goes on with those behind it. While the list keeps to a machine, each part's own
// data is copied first, then the machine's.
void CBrowserSession::ExpectRest(PartId part)
{
    const bool goes_on = next_copy_ < selection_.size() && selection_[next_copy_] == part;
    const auto place = goes_on ? selection_.begin() + static_cast<std::ptrdiff_t>(next_copy_)
                               : std::find(selection_.begin(), selection_.end(), part);
    if (place != selection_.end()) {
        next_copy_ = static_cast<std::size_t>(place - selection_.begin()) + 1;
        const std::int16_t filter = view_.filter;
        const bool machine = filter != all_data_kinds && filter != part_data_kind;
        const bool by_twos = machine && (data_kind_ == part_data_kind || data_kind_ == filter);
        std::vector<PartCopy> copies;
        if (by_twos && data_kind_ == part_data_kind) {
            copies.push_back({part, SlotsOfMask(filter)});
        }
        for (const PartId next : std::span(selection_).subspan(next_copy_)) {
            copies.push_back({next, SlotsOfMask(by_twos ? part_data_kind : data_kind_)});
            if (by_twos) {
                copies.push_back({next, SlotsOfMask(filter)});
            }
        }
        library_->Expect(copies);
    }
}

bool CBrowserSession::StageFiles(IPartLibrary& library, const PartRow& part, SlotSet slots, CopyProgress* progress)
{
    if (!target_folder_) {
        return SetProblem({LibraryFault::WriteFailed, part.name, QStringLiteral("no target folder is set")});
    }
    CStagedFiles files(*target_folder_, target_names_);
    std::optional<FileSlot> begun;
    const auto begin = [&](FileSlot slot, qint64 bytes) {
        if (begun != slot && !files.Begin(ToWide(part.name) + KindOf(slot).extension)) {
            return false;
        }
        begun = slot;
        if (progress != nullptr && pane_ != nullptr) {
            progress->bytes += bytes;
            pane_->CopyProgressed(*progress);
        }
        return true;
    };
    const auto write = [&](FileSlot slot, std::span<const char> block) {
        return begin(slot, static_cast<qint64>(block.size())) ? files.Write(block) : files.Problem();
    };
    const auto file = [&](const PartFile& kept) { return begin(kept.slot, kept.bytes) ? files.File() : -1; };
    const bool staged = library.CopyFiles(part.id, slots, {write, file}) && files.Commit();
    return staged || SetProblem(files.Problem() ? files.Problem() : library.Problem());
}

// The entry that a picture is asked for; a deleted one makes the list outdated.
std::optional<PartRow> CBrowserSession::FirstSelected()
{
    last_status_ = status_ok;
    if (selection_.empty() || library_ == nullptr) {
        return std::nullopt;
    }
    auto part = library_->FindPart(selection_.front());
    if (!part) {
        last_status_ = library_->Problem().fault == LibraryFault::NoPart ? status_list_outdated : status_failed;
        SetProblem(library_->Problem());
    }
    return part;
}

// A PNG picture comes as a file later; its block only asks.
bool CBrowserSession::ReadPartImage(std::span<char, image_block_bytes> image)
{
    const auto slot = SlotOfTag({image.data(), image.size()});
    const auto part = FirstSelected();
    if (!slot || !part || (part->slots & SetOf(*slot)) == 0) {
        return false;
    }
    if (*slot == FileSlot::Png) {
        return true;
    }
    const auto content = library_->ReadFile(part->id, *slot, image_block_bytes);
    if (!content) {
        last_status_ = status_failed;
        SetProblem(library_->Problem());
    }
    const bool fits = content && static_cast<std::size_t>(content->size()) <= image.size();
    if (fits) {
        std::fill(std::copy(content->begin(), content->end(), image.begin()), image.end(), '\0');
    }
    return fits;
}

std::u16string CBrowserSession::GetPreviewFileTitle()
{
    const auto part = FirstSelected();
    if (!part || (part->slots & SetOf(FileSlot::Png)) == 0 || !StageFiles(*library_, *part, SetOf(FileSlot::Png))) {
        return {};
    }
    return ToWide(part->name);
}

} // namespace partkeep
