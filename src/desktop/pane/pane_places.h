// The folders that a user comes back to: favourites and the last ones visited. They stand in a file of the pane's
// own, per user, and are read again before each change, since several dialogs may be open at once.
#pragma once

#include <QList>
#include <QString>

#include <utility>

namespace partkeep {

struct PanePlace {
    QString server;
    QString folder; // empty: the server's root

    friend bool operator==(const PanePlace&, const PanePlace&) = default;
};

class CPanePlaces {
public:
    // A native path; empty: nothing is kept beyond this run.
    explicit CPanePlaces(QString file) : file_(std::move(file)) { Read(); }

    // `partkeep-read/browser.json` under the user's configuration folder.
    [[nodiscard]] static QString UsersFile();

    [[nodiscard]] const QList<PanePlace>& Favourites() const { return favourites_; }
    [[nodiscard]] const QList<PanePlace>& Recent() const { return recent_; } // the latest first
    [[nodiscard]] bool IsFavourite(const PanePlace& place) const { return favourites_.contains(place); }

    void ToggleFavourite(const PanePlace& place);
    void Visit(const PanePlace& place);

private:
    void Read();
    void Write() const; // in silence where the file cannot be written

    QString file_;
    QList<PanePlace> favourites_;
    QList<PanePlace> recent_;
};

} // namespace partkeep
