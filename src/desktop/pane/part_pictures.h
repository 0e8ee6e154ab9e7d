// Small pictures of parts for the list: taken one at a time between events, for rows that are shown, and kept for the
// last few hundred parts, fewer of large ones. What is still to come over a line is not waited for.
#pragma once

#include "partlibrary/library/part_library.h"

#include <QByteArray>
#include <QCache>
#include <QPixmap>

#include <vector>

namespace partkeep {

class CPartPictures {
public:
    CPartPictures();

    void Clear();
    void SetSize(int side, qreal device_pixel_ratio); // in logical pixels

    // The picture, or null while it is on its way; then it is asked for.
    [[nodiscard]] QPixmap Picture(const PartRow& row);

    [[nodiscard]] bool HasWork() const { return !wanted_.empty(); }
    // Takes the picture that was asked for last, where it is at hand. The part that it belongs to; 0: there is none.
    PartId ReadNext(IPartLibrary& library);
    // Some of those that were not at hand may have come.
    void TryAgain();

private:
    struct Wanted {
        PartId part;
        FileSlot slot;
    };

    static void Add(std::vector<Wanted>& pictures, const Wanted& picture);
    [[nodiscard]] bool IsAskedFor(PartId part) const;
    [[nodiscard]] QPixmap Fit(const QByteArray& content, FileSlot slot) const;

    QCache<PartId, QPixmap> pictures_;
    std::vector<Wanted> wanted_;
    std::vector<Wanted> awaited_; // they were not at hand
    int side_ = 0;
    qreal scale_ = 1;
};

} // namespace partkeep
