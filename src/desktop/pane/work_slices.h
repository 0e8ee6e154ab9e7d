// What the pane does between events, a slice at a time: a search text that was typed, then the rest of the list, then
// pictures. Begins with a paint or a key, and never inside a call of the component.
#pragma once

#include "desktop/pane/part_list_model.h"
#include "desktop/pane/part_pictures.h"

#include <QString>
#include <QTimer>

#include <functional>
#include <optional>

namespace partkeep {

class CWorkSlices {
public:
    // `found` is told after each slice of the list. All is borrowed. A search waits while a window over that of the
    // list is open, for which nothing may change.
    CWorkSlices(const QWidget& list, CBrowserSession& session, CPartListModel& model, CPartPictures& pictures,
                std::function<void()> found);

    [[nodiscard]] bool HasWork() const;
    void Start();
    void TakePictures();              // some that were to come may be there
    void Search(const QString& text); // waits for its slice; a later text takes its place
    void ForgetSearch() { search_.reset(); }

private:
    [[nodiscard]] bool Scanning() const;
    void Work();

    const QWidget& list_;
    CBrowserSession& session_;
    CPartListModel& model_;
    CPartPictures& pictures_;
    std::function<void()> found_;
    std::optional<QString> search_;
    QTimer timer_;
};

} // namespace partkeep
