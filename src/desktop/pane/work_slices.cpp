#include "desktop/pane/work_slices.h"

#include <QApplication>
#include <QWidget>

#include <utility>

namespace partkeep {

namespace {

constexpr int while_modal_ms = 50;

} // namespace

CWorkSlices::CWorkSlices(const QWidget& list, CBrowserSession& session, CPartListModel& model, CPartPictures& pictures,
                         std::function<void()> found)
    : list_(list), session_(session), model_(model), pictures_(pictures), found_(std::move(found))
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
    const QWidget* const modal = QApplication::activeModalWidget();
    if (search_ && modal != nullptr && modal != list_.window()) { // whose indices stay true
        timer_.setInterval(while_modal_ms);
        return;
    }
    timer_.setInterval(0);
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
