// Small pictures of parts for the list: read one at a time between events, for rows that are shown, and kept for the
// last few hundred parts.
#pragma once

#include "partlibrary/library/part_library.h"

#include <QByteArray>
#include <QCache>
#include <QPixmap>

#include <vector>

namespace partkeep {

inline constexpr int picture_size = 32; // logical pixels, both ways

class CPartPictures {
public:
    CPartPictures();

    void Clear();
    void SetScale(qreal device_pixel_ratio);

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
    qreal scale_ = 1;
};

} // namespace partkeep
