#include "desktop/pane/part_pictures.h"

#include <QBuffer>
#include <QImageReader>

#include <algorithm>

namespace partkeep {

namespace {

constexpr int kept_pixels = 4'000'000;  // four bytes each
constexpr std::size_t most_wanted = 64; // what scrolled by long ago is not read any more
constexpr int largest_side = 8192;
constexpr qint64 most_pixels = qint64{4096} * 4096; // each costs time in which the list stands

// The bent view tells parts apart best.
constexpr FileSlot preferred_slots[] = {FileSlot::Bent, FileSlot::Png, FileSlot::Flat};

} // namespace

CPartPictures::CPartPictures() : pictures_(kept_pixels) {}

void CPartPictures::Clear()
{
    pictures_.clear();
    wanted_.clear();
    awaited_.clear();
}

void CPartPictures::SetSize(int side, qreal device_pixel_ratio)
{
    if (side_ != side || scale_ != device_pixel_ratio) {
        side_ = side;
        scale_ = device_pixel_ratio;
        Clear();
    }
}

QPixmap CPartPictures::Picture(const PartRow& row)
{
    if (const QPixmap* known = pictures_.object(row.id)) {
        return *known;
    }
    const auto found = std::find_if(std::begin(preferred_slots), std::end(preferred_slots),
                                    [&row](FileSlot slot) { return (row.slots & SetOf(slot)) != 0; });
    if (found != std::end(preferred_slots) && !IsAskedFor(row.id)) {
        Add(wanted_, {row.id, *found});
    }
    return {};
}

bool CPartPictures::IsAskedFor(PartId part) const
{
    const auto same = [part](const Wanted& it) { return it.part == part; };
    return std::any_of(wanted_.begin(), wanted_.end(), same) || std::any_of(awaited_.begin(), awaited_.end(), same);
}

void CPartPictures::Add(std::vector<Wanted>& pictures, const Wanted& picture)
{
    pictures.push_back(picture);
    if (pictures.size() > most_wanted) {
        pictures.erase(pictures.begin());
    }
}

void CPartPictures::TryAgain()
{
    wanted_.insert(wanted_.begin(), awaited_.begin(), awaited_.end());
    awaited_.clear();
}

PartId CPartPictures::ReadNext(IPartLibrary& library)
{
    if (wanted_.empty()) {
        return 0;
    }
    const Wanted next = wanted_.back();
    wanted_.pop_back();
    const auto content = library.PictureAtHand(next.part, next.slot);
    if (!content) {
        Add(awaited_, next);
        return 0;
    }
    const QPixmap picture = Fit(*content, next.slot);
    // An empty one too, lest it be asked for again.
    pictures_.insert(next.part, new QPixmap(picture), std::max(1, picture.width() * picture.height()));
    return next.part;
}

// What is stored may be anything: it is of its slot's kind, or nothing, lest a stranger choose who decodes it.
QPixmap CPartPictures::Fit(const QByteArray& content, FileSlot slot) const
{
    QBuffer buffer;
    buffer.setData(content);
    buffer.open(QIODevice::ReadOnly);
    QImageReader reader(&buffer, slot == FileSlot::Png ? "png" : "bmp");
    reader.setAutoDetectImageFormat(false);
    const QSize size = reader.size();
    if (!size.isValid() || size.width() > largest_side || size.height() > largest_side ||
        qint64{size.width()} * size.height() > most_pixels) {
        return {};
    }
    const int side = qRound(side_ * scale_);
    const QImage image = reader.read();
    if (image.isNull()) {
        return {};
    }
    QPixmap picture = QPixmap::fromImage(image.scaled(side, side, Qt::KeepAspectRatio, Qt::SmoothTransformation));
    picture.setDevicePixelRatio(scale_);
    return picture;
}

} // namespace partkeep
