// The session's operations that read a part and write its files.
#include "partlibrary/browser_session.h"

#include "partlibrary/library_names.h"
#include "partlibrary/staged_files.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace partkeep {

namespace {

constexpr std::int32_t status_ok = 0;
constexpr std::int32_t status_failed = -1;

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

std::optional<PartRow> CBrowserSession::FindByPath(CPartLibrary& library, std::u16string_view part_path)
{
    const std::size_t separator = part_path.rfind(u'\\');
    const bool in_root = separator == std::u16string_view::npos;
    const std::u16string folder(in_root ? u"" : part_path.substr(0, separator));
    const std::u16string name(in_root ? part_path : part_path.substr(separator + 1));
    auto part = library.FindPart(QString::fromStdU16String(folder), QString::fromStdU16String(name));
    if (!part) {
        SetProblem(library.Problem());
    }
    return part;
}

std::optional<PartRow> CBrowserSession::ReadPartAttributes(std::u16string_view server, std::u16string_view part_path)
{
    CPartLibrary* library = LibraryOf(server);
    return library != nullptr ? FindByPath(*library, part_path) : std::nullopt;
}

bool CBrowserSession::CopyPartFiles(std::u16string_view server, std::u16string_view part_path)
{
    CPartLibrary* library = LibraryOf(server);
    const auto part = library != nullptr ? FindByPath(*library, part_path) : std::nullopt;
    return part && StageFiles(*library, *part, SlotsOfMask(data_kind_));
}

// A library may come from elsewhere, so the name is looked at once more before it becomes part of a path.
bool CBrowserSession::StageFiles(CPartLibrary& library, const PartRow& part, SlotSet slots)
{
    if (!target_folder_) {
        return SetProblem({LibraryFault::WriteFailed, part.name, QStringLiteral("no target folder is set")});
    }
    if (const NameFault fault = CheckName(part.name); fault != NameFault::None) {
        return SetProblem({LibraryFault::NameRefused, part.name, NameFaultText(fault)});
    }
    if (pane_ != nullptr) {
        pane_->CopyStarted(part.name);
    }
    CStagedFiles files(*target_folder_, target_names_);
    const bool staged = WriteFiles(library, part, slots & part.slots, files) && files.Commit();
    if (pane_ != nullptr) {
        pane_->CopyEnded();
    }
    return staged || SetProblem(files.Problem() ? files.Problem() : library.Problem());
}

bool CBrowserSession::WriteFiles(CPartLibrary& library, const PartRow& part, SlotSet slots, CStagedFiles& files)
{
    const std::u16string name = part.name.toStdU16String();
    std::array<std::size_t, file_kinds.size()> places = {};
    for (const FileKind& kind : file_kinds) {
        if ((slots & SetOf(kind.slot)) == 0) {
            continue;
        }
        const auto place = files.Begin(name + kind.extension);
        if (!place) {
            return false;
        }
        places[static_cast<std::size_t>(kind.slot)] = *place;
    }
    return library.CopyFiles(part.id, slots, [&](FileSlot slot, qint64 offset, std::span<const char> block) {
        return files.Write(places[static_cast<std::size_t>(slot)], offset, block);
    });
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
    bool placed = false;
    const bool read = library_->ReadFiles(part->id, SetOf(*slot), [&](FileSlot, const QByteArray& content) {
        placed = static_cast<std::size_t>(content.size()) <= image.size();
        if (placed) {
            std::fill(std::copy(content.begin(), content.end(), image.begin()), image.end(), '\0');
        }
        return placed;
    });
    if (!read) {
        last_status_ = status_failed;
        SetProblem(library_->Problem());
    }
    return read && placed;
}

std::u16string CBrowserSession::GetPreviewFileTitle()
{
    const auto part = FirstSelected();
    if (!part || (part->slots & SetOf(FileSlot::Png)) == 0 || !StageFiles(*library_, *part, SetOf(FileSlot::Png))) {
        return {};
    }
    return part->name.toStdU16String();
}

} // namespace partkeep
