// What will be looked at soon: rows of parts and their pictures, had at hand within a budget. Tells what to ask for
// next and takes the answers; asks nobody itself, and nobody waits for it.
#pragma once

#include "partlibrary/postgres/pg_at_hand.h"

#include <deque>
#include <optional>
#include <set>
#include <span>
#include <utility>
#include <vector>

namespace partkeep {

class CPgPictures {
public:
    struct Question {
        CSql sql;
        std::optional<PartFile> picture; // none: it is for rows
    };

    explicit CPgPictures(CPgAtHand& at_hand)
        : at_hand_(at_hand.Cache() != nullptr ? at_hand : of_pictures_), cache_(at_hand.Cache())
    {
    }

    // Takes the place of what was wanted before; the first ones first. Nothing where nothing is kept.
    void Want(std::span<const PartId> parts);

    // A picture that is shown; empty where the part has none. Nothing while it is not at hand: then it is wanted before
    // all others.
    [[nodiscard]] std::optional<QByteArray> Picture(PartId part, FileSlot slot);
    // Whether something that was not at hand has come since the last call.
    [[nodiscard]] bool TakeArrival() { return std::exchange(came_, false); }

    [[nodiscard]] std::optional<Question> Next(); // nothing: not now
    [[nodiscard]] qint64 BytesUnderWay() const { return under_way_; }
    void TakeRows(const CPgResult& result);
    void TakePicture(const CPgResult& result, const PartFile& picture);
    void LoseAnswers(); // those that have not come yet never will
    void Confirm(qint64 revision) { at_hand_.Confirm(revision); }

private:
    struct Shown {
        PartId part;
        FileSlot slot;

        friend bool operator==(const Shown&, const Shown&) = default;
    };

    [[nodiscard]] std::optional<QByteArray> Content(const PartFile& picture) const;
    [[nodiscard]] bool IsHere(const PartFile& picture) const;
    [[nodiscard]] bool IsUnderWay(const PartFile& picture) const { return asked_.contains(picture.hash); }
    [[nodiscard]] Question RowsQuestion();
    [[nodiscard]] std::optional<Question> ShownQuestion(const CPgAtHand::Known& part, FileSlot slot);
    [[nodiscard]] std::optional<Question> WantedQuestion(const CPgAtHand::Known& part);
    [[nodiscard]] Question PictureQuestion(const PartFile& picture);
    void Hold(const PartFile& picture, const QByteArray& content);

    CPgAtHand of_pictures_{nullptr}; // where nothing is kept: no part may load by what a picture needed
    CPgAtHand& at_hand_;
    CContentCache* cache_;
    std::deque<PartId> wanted_;
    std::deque<Shown> shown_;
    std::deque<std::pair<QByteArray, QByteArray>> held_; // by hash: what is not kept, until it is shown
    qint64 held_bytes_ = 0;
    qint64 room_ = 0; // for what is wanted, in bytes
    qint64 under_way_ = 0;
    std::set<QByteArray> asked_;
    std::vector<PartId> rows_asked_;
    bool came_ = false;
};

} // namespace partkeep
