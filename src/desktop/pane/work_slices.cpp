#include "desktop/pane/work_slices.h"

#include <utility>

namespace partkeep {

CWorkSlices::CWorkSlices(CBrowserSession& session, CPartListModel& model, CPartPictures& pictures,
                         std::function<void()> found)
    : session_(session), model_(model), pictures_(pictures), found_(std::move(found))
{
    QObject::connect(&timer_, &QTimer::timeout, &timer_, [this] { Work(); });
}

bool CWorkSlices::Scanning() const
{
    return model_.Started() && !model_.Complete() && !model_.Failed();
}

bool CWorkSlices::HasWork() const
{
    return search_.has_value() || Scanning() || (session_.Library() != nullptr && pictures_.HasWork());
}

void CWorkSlices::Start()
{
    if (HasWork() && !timer_.isActive()) {
        timer_.start();
    }
}

void CWorkSlices::TakePictures()
{
    pictures_.TryAgain();
    Start();
}

void CWorkSlices::Search(const QString& text)
{
    search_ = text;
    Start();
}

void CWorkSlices::Work()
{
    if (search_) {
        session_.SearchFor(*std::exchange(search_, std::nullopt));
    } else if (Scanning()) {
        model_.Step();
        found_();
    } else if (pictures_.HasWork() && session_.Library() != nullptr) {
        model_.PictureArrived(pictures_.ReadNext(*session_.Library()));
    }
    if (!HasWork()) {
        timer_.stop();
    }
}

} // namespace partkeep
