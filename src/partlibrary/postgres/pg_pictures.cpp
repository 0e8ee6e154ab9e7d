#include "partlibrary/postgres/pg_pictures.h"

#include "partlibrary/library/content_hash.h"

#include <algorithm>
#include <vector>

namespace partkeep {

namespace {

constexpr std::ptrdiff_t rows_together = 256;
constexpr std::size_t most_shown = 64; // what scrolled by long ago is shown no more
constexpr qint64 most_ahead_bytes = 16 << 20;
constexpr qint64 most_held_bytes = 4 << 20;
constexpr FileSlot pictures[] = {FileSlot::Bent, FileSlot::Flat, FileSlot::Png};

const PartFile* FileOf(const CPgAtHand::Known& part, FileSlot slot)
{
    const auto file =
        std::find_if(part.files.begin(), part.files.end(), [slot](const PartFile& it) { return it.slot == slot; });
    return file != part.files.end() ? &*file : nullptr;
}

} // namespace

// What there was no room for may have some now.
void CPgPictures::Want(std::span<const PartId> parts)
{
    wanted_.clear();
    if (cache_ != nullptr) {
        wanted_.assign(parts.begin(), parts.end());
    }
    room_ = most_ahead_bytes;
    came_ = true;
}

std::optional<QByteArray> CPgPictures::Picture(PartId part, FileSlot slot)
{
    if (const CPgAtHand::Known* const known = at_hand_.Find(part)) {
        const PartFile* const file = FileOf(*known, slot);
        auto content = file != nullptr ? Content(*file) : QByteArray();
        if (content) {
            return content;
        }
    }
    if (const Shown picture{part, slot}; std::find(shown_.begin(), shown_.end(), picture) == shown_.end()) {
        shown_.push_back(picture);
    }
    if (shown_.size() > most_shown) {
        shown_.pop_front();
    }
    return std::nullopt;
}

std::optional<QByteArray> CPgPictures::Content(const PartFile& picture) const
{
    const auto held =
        std::find_if(held_.begin(), held_.end(), [&picture](const auto& it) { return it.first == picture.hash; });
    if (held != held_.end()) {
        return held->second;
    }
    return cache_ != nullptr ? cache_->Read(picture.hash, picture.bytes) : std::nullopt;
}

bool CPgPictures::IsHere(const PartFile& picture) const
{
    return (cache_ != nullptr && cache_->Has(picture.hash, picture.bytes)) ||
           std::any_of(held_.begin(), held_.end(), [&picture](const auto& it) { return it.first == picture.hash; });
}

// Questions.

std::optional<CPgPictures::Question> CPgPictures::Next()
{
    while (rows_asked_.empty() && !(shown_.empty() && wanted_.empty())) {
        const bool shown = !shown_.empty();
        const CPgAtHand::Known* const part = at_hand_.Find(shown ? shown_.front().part : wanted_.front());
        if (part == nullptr) {
            return RowsQuestion();
        }
        auto question = shown ? ShownQuestion(*part, shown_.front().slot) : WantedQuestion(*part);
        if (shown) {
            shown_.pop_front();
        } else if (!question) {
            wanted_.pop_front();
        }
        if (question) {
            return question;
        }
    }
    return std::nullopt;
}

CPgPictures::Question CPgPictures::RowsQuestion()
{
    const auto add = [this](PartId part) {
        if (std::ssize(rows_asked_) < rows_together && at_hand_.Find(part) == nullptr) {
            rows_asked_.push_back(part);
        }
    };
    for (const Shown& picture : shown_) {
        add(picture.part);
    }
    std::for_each(wanted_.begin(), wanted_.end(), add);
    return {CPgAtHand::Statement(rows_asked_), {}};
}

std::optional<CPgPictures::Question> CPgPictures::ShownQuestion(const CPgAtHand::Known& part, FileSlot slot)
{
    const PartFile* const file = FileOf(part, slot);
    if (file == nullptr || IsHere(*file)) {
        came_ = true;
        return std::nullopt;
    }
    const bool asks = !IsUnderWay(*file) && file->bytes <= std::min(qint64{largest_list_picture}, room_);
    return asks ? std::optional(PictureQuestion(*file)) : std::nullopt;
}

// One after the other of a part, of those that will be kept.
std::optional<CPgPictures::Question> CPgPictures::WantedQuestion(const CPgAtHand::Known& part)
{
    for (const PartFile& file : part.files) {
        const bool picture = std::find(std::begin(pictures), std::end(pictures), file.slot) != std::end(pictures);
        if (picture && !IsUnderWay(file) && file.bytes <= std::min(qint64{largest_list_picture}, room_) &&
            cache_->Takes(file.bytes) && !IsHere(file)) {
            return PictureQuestion(file);
        }
    }
    return std::nullopt;
}

CPgPictures::Question CPgPictures::PictureQuestion(const PartFile& picture)
{
    room_ -= picture.bytes;
    under_way_ += picture.bytes;
    asked_.insert(picture.hash);
    CSql sql("SELECT piece.data FROM part_file JOIN piece ON piece.content = part_file.content WHERE part = ");
    sql.Value(picture.part).Add(" AND slot = ").Value(static_cast<std::int32_t>(picture.slot));
    sql.Add(" AND hash = ").Value(picture.hash).Add(" ORDER BY nr");
    return {std::move(sql), picture};
}

// Answers.

// What was asked for and is not among them has gone, or cannot be had; it is not asked for again by itself.
void CPgPictures::TakeRows(const CPgResult& result)
{
    if (result.Status() == PGRES_TUPLES_OK) {
        at_hand_.Take(result);
    }
    const std::vector<PartId> asked = std::exchange(rows_asked_, {});
    const auto in_vain = [&](PartId part) {
        return std::find(asked.begin(), asked.end(), part) != asked.end() && at_hand_.Find(part) == nullptr;
    };
    std::erase_if(wanted_, in_vain);
    std::erase_if(shown_, [&](const Shown& picture) { return in_vain(picture.part); });
}

void CPgPictures::TakePicture(const CPgResult& result, const PartFile& picture)
{
    under_way_ -= picture.bytes;
    QByteArray content;
    for (int row = 0; row < result.Rows(); ++row) {
        const std::string_view piece = result.Raw(row, 0);
        content.append(piece.data(), static_cast<qsizetype>(piece.size()));
    }
    const std::span<const char> bytes(content.constData(), static_cast<std::size_t>(content.size()));
    CContentHash sum;
    sum.Add({content.constData(), bytes.size()});
    if (content.size() != picture.bytes || sum.Hash() != picture.hash) {
        return; // nor will it be a moment later
    }
    asked_.erase(picture.hash);
    if (const auto kept = cache_ != nullptr ? cache_->Begin(picture.bytes) : nullptr) {
        kept->Add(bytes);
        kept->Keep(picture.hash);
    }
    if (!IsHere(picture)) {
        Hold(picture, content);
    }
    came_ = true;
}

void CPgPictures::Hold(const PartFile& picture, const QByteArray& content)
{
    held_.emplace_back(picture.hash, content);
    held_bytes_ += content.size();
    while (held_bytes_ > most_held_bytes) {
        held_bytes_ -= held_.front().second.size();
        held_.pop_front();
    }
}

void CPgPictures::LoseAnswers()
{
    asked_.clear();
    under_way_ = 0;
    rows_asked_.clear();
    came_ = true;
}

} // namespace partkeep
