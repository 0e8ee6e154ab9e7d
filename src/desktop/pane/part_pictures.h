// Small pictures of parts for the list: read one at a time between events, for rows that are shown, and kept for the
// last few hundred parts, fewer of large ones.
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
    // Reads the picture that was asked for last. The part that it belongs to; 0: there was none.
    PartId ReadNext(IPartLibrary& library);

private:
    struct Wanted {
        PartId part;
        FileSlot slot;
    };

    [[nodiscard]] QPixmap Fit(const QByteArray& content) const;

    QCache<PartId, QPixmap> pictures_;
    std::vector<Wanted> wanted_;
    int side_ = 0;
    qreal scale_ = 1;
};

} // namespace partkeep
