// What the pane remembers of its user: favourite folders, the last ones worked in, and where is searched. It stands in
// a file of the pane's own, per user, and is read again before each change, since several dialogs may be open at once.
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

struct PaneFavourite {
    PanePlace place;
    QString name; // given by the user; empty: the place's own

    friend bool operator==(const PaneFavourite&, const PaneFavourite&) = default;
};

// As the tree would spell it: server and folder.
[[nodiscard]] QString PlaceText(const PanePlace& place);
[[nodiscard]] QString NameOf(const PaneFavourite& favourite);

class CPanePlaces {
public:
    // A native path; empty: nothing is kept beyond this run.
    explicit CPanePlaces(QString file) : file_(std::move(file)) { Read(); }

    // `partkeep-read/browser.json` under the user's configuration folder.
    [[nodiscard]] static QString UsersFile();

    [[nodiscard]] const QList<PaneFavourite>& Favourites() const { return favourites_; } // in the user's order
    [[nodiscard]] const QList<PanePlace>& Recent() const { return recent_; }             // the latest first
    [[nodiscard]] bool IsFavourite(const PanePlace& place) const;
    [[nodiscard]] bool SearchesServer() const { return searches_server_; }

    void ToggleFavourite(const PanePlace& place);
    void SetFavourites(const QList<PaneFavourite>& favourites);
    void Visit(const PanePlace& place);
    void SetSearchesServer(bool whole);

private:
    void Read();
    void Write() const; // in silence where the file cannot be written

    QString file_;
    QList<PaneFavourite> favourites_;
    QList<PanePlace> recent_;
    bool searches_server_ = false;
};

} // namespace partkeep
