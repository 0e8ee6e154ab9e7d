// How content reaches a library, and what a change looks up.
#include "partlibrary/library/bitmap_file.h"
#include "partlibrary/library/content_hash.h"
#include "partlibrary/postgres/pg_copy_row.h"
#include "partlibrary/postgres/pg_schema.h"
#include "partlibrary/postgres/pg_writer.h"

#include <algorithm>
#include <utility>

namespace partkeep {

namespace {

constexpr std::size_t most_held = 4096;        // parts that wait
constexpr std::size_t sent_together = 1 << 16; // bytes: to send small contents takes longer than to store them
constexpr qint64 first_names = 16;             // that are read ahead
constexpr qint64 most_names = 4096;

} // namespace

bool CPgWriter::EndPieces()
{
    return !std::exchange(in_pieces_, false) || (SendPieces() && connection_->EndCopy());
}

bool CPgWriter::SendPieces()
{
    const bool sent = piece_rows_.empty() || connection_->PutCopy(piece_rows_);
    piece_rows_.clear();
    return sent;
}

bool CPgWriter::PutPieces(FileSlot slot, const ContentSource& source, StoredContent& stored)
{
    CContentHash hash;
    for (std::int32_t number = 0;; ++number) {
        const qint64 size = source(piece_);
        const char* const fault =
            number == 0 ? PictureFault(slot, QByteArray::fromRawData(piece_.data(), std::max<qint64>(size, 0)))
                        : nullptr;
        if (size < 0 || fault != nullptr) {
            return Refuse(size < 0 ? LibraryFault::ReadFailed : LibraryFault::BadInput, {}, QString::fromLatin1(fault));
        }
        stored.bytes += size;
        if (stored.bytes > postgres_max_file_bytes) {
            return Refuse(LibraryFault::BadInput, {}, QStringLiteral("a file of more than 4 GB"));
        }
        const std::string_view piece(piece_.data(), static_cast<std::size_t>(size));
        hash.Add(piece);
        if (size > 0) {
            CCopyRow(piece_rows_, 3).Put(stored.id).Put(number).Put(piece);
        }
        if (piece_rows_.size() >= sent_together && !SendPieces()) {
            return false;
        }
        if (size < postgres_piece_bytes) {
            break;
        }
    }
    stored.hash = hash.Hash();
    return true;
}

// A COPY goes on from one content to the next, until something else is asked.
std::optional<StoredContent> CPgWriter::Store(FileSlot slot, const ContentSource& source)
{
    if (!in_pieces_ && !connection_->BeginCopy(CSql("COPY piece FROM STDIN (FORMAT binary)"))) {
        return std::nullopt;
    }
    in_pieces_ = true;
    StoredContent stored;
    stored.id = next_content_++;
    return PutPieces(slot, source, stored) ? std::optional(stored) : std::nullopt;
}

bool CPgWriter::PutFile(PartId part, FileSlot slot, const StoredContent& content)
{
    HeldPart* const held = Hold(part);
    if (held == nullptr) {
        return false;
    }
    const std::pair place{part, static_cast<std::int32_t>(slot)};
    if (held->old && (held->old->slots & SetOf(slot)) != 0 && !files_.contains(place)) {
        old_files_.push_back(place);
    }
    const auto [put, is_new] = files_.emplace(place, content);
    if (!is_new) {
        replaced_.push_back(std::exchange(put->second, content).id);
    }
    held->row.slots |= SetOf(slot);
    held->changed = true;
    return true;
}

// Looking up.

void CPgWriter::Take(const CPgResult& result, int row)
{
    PartRow part;
    if (ReadPart(result, row, part) != PgRowFault::Damaged && !parts_.contains(part.id)) {
        names_[{part.folder, part.name}] = part.id;
        parts_[part.id] = {part, part, false, {}, 0};
    }
}

CPgWriter::HeldPart* CPgWriter::Hold(PartId part)
{
    const auto known = parts_.find(part);
    if (known != parts_.end()) {
        return &known->second;
    }
    if (!EndPieces()) {
        return nullptr;
    }
    const auto found = connection_->Ask(CSql("SELECT ").Add(pg_part_columns).Add(" FROM part WHERE id = ").Value(part));
    if (!found || found->Rows() == 0) {
        if (found) {
            Refuse(LibraryFault::NoPart, QString::number(part));
        }
        return nullptr;
    }
    Take(*found, 0);
    const auto held = parts_.find(part);
    return held != parts_.end() ? &held->second : nullptr;
}

// False on an error; null where nobody has the name.
bool CPgWriter::Find(qint64 folder, const QString& name, HeldPart*& found)
{
    found = nullptr;
    const auto known = names_.find({folder, name});
    const bool read = bare_folders_.contains(folder) || (read_.folder == folder && ToUtf8(name) >= ToUtf8(read_.from) &&
                                                         (read_.to.isEmpty() || ToUtf8(name) <= ToUtf8(read_.to)));
    if (known == names_.end() && !read && !ReadAhead(folder, name)) {
        return false;
    }
    const auto place = names_.find({folder, name});
    if (place != names_.end() && place->second != 0) {
        found = Hold(place->second);
        return found != nullptr;
    }
    return true;
}

// Names from this one on, more each time that the next one was not among them.
bool CPgWriter::ReadAhead(qint64 folder, const QString& name)
{
    const qint64 limit = read_.folder == folder ? std::min(read_.rows * 4, most_names) : first_names;
    if (parts_.size() > most_held && !Flush()) {
        return false;
    }
    const auto rows = EndPieces() ? connection_->Ask(CSql("SELECT ")
                                                         .Add(pg_part_columns)
                                                         .Add(" FROM part WHERE folder = ")
                                                         .Value(folder)
                                                         .Add(" AND name >= ")
                                                         .Value(name)
                                                         .Add(" ORDER BY name LIMIT ")
                                                         .Value(limit))
                                  : std::nullopt;
    if (!rows) {
        return false;
    }
    for (int row = 0; row < rows->Rows(); ++row) {
        Take(*rows, row);
    }
    read_ = {folder, name, rows->Rows() < limit ? QString() : rows->Text(rows->Rows() - 1, 4), limit};
    return true;
}

} // namespace partkeep
