#include "desktop/pane/pane_places.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSaveFile>
#include <QStandardPaths>

#include <algorithm>

namespace partkeep {

namespace {

constexpr qsizetype most_recent = 12;
constexpr qsizetype most_favourites = 40;
constexpr qint64 largest_file = 1 << 20;
constexpr auto favourites_key = "favourites";
constexpr auto recent_key = "recent";
constexpr auto server_key = "server";
constexpr auto folder_key = "folder";
constexpr auto name_key = "name";
constexpr auto whole_server_key = "searchWholeServer";
constexpr qsizetype longest_name = 200;

const PanePlace& PlaceOf(const PanePlace& place)
{
    return place;
}

const PanePlace& PlaceOf(const PaneFavourite& favourite)
{
    return favourite.place;
}

template <typename Entry>
bool Holds(const QList<Entry>& entries, const PanePlace& place)
{
    return std::any_of(entries.begin(), entries.end(), [&](const Entry& entry) { return PlaceOf(entry) == place; });
}

PanePlace ReadPlace(const QJsonValue& entry)
{
    return {entry[QLatin1String(server_key)].toString(), entry[QLatin1String(folder_key)].toString()};
}

void ReadEntry(const QJsonValue& entry, PanePlace& place)
{
    place = ReadPlace(entry);
}

void ReadEntry(const QJsonValue& entry, PaneFavourite& favourite)
{
    favourite = {ReadPlace(entry), entry[QLatin1String(name_key)].toString().left(longest_name)};
}

template <typename Entry>
QList<Entry> ReadEntries(const QJsonValue& value, qsizetype most)
{
    QList<Entry> entries;
    for (const auto& read : value.toArray()) {
        Entry entry;
        ReadEntry(read, entry);
        const PanePlace& place = PlaceOf(entry);
        if (!place.server.isEmpty() && !Holds(entries, place) && entries.size() < most) {
            entries += entry;
        }
    }
    return entries;
}

QJsonObject EntryObject(const PanePlace& place)
{
    return {{QLatin1String(server_key), place.server}, {QLatin1String(folder_key), place.folder}};
}

QJsonObject EntryObject(const PaneFavourite& favourite)
{
    QJsonObject object = EntryObject(favourite.place);
    if (!favourite.name.isEmpty()) {
        object[QLatin1String(name_key)] = favourite.name;
    }
    return object;
}

template <typename Entry>
QJsonArray EntriesArray(const QList<Entry>& entries)
{
    QJsonArray array;
    for (const Entry& entry : entries) {
        array += EntryObject(entry);
    }
    return array;
}

} // namespace

QString PlaceText(const PanePlace& place)
{
    return place.folder.isEmpty() ? place.server : place.server + u'\\' + place.folder;
}

QString NameOf(const PaneFavourite& favourite)
{
    return favourite.name.isEmpty() ? PlaceText(favourite.place) : favourite.name;
}

QString CPanePlaces::UsersFile()
{
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation);
    return folder.isEmpty() ? QString() : folder + QStringLiteral("/partkeep-read/browser.json");
}

void CPanePlaces::ToggleFavourite(const PanePlace& place)
{
    Read();
    if (favourites_.removeIf([&](const PaneFavourite& known) { return known.place == place; }) == 0) {
        favourites_ += {place, {}};
        favourites_ = favourites_.first(std::min(favourites_.size(), most_favourites)); // the user's order stays
    }
    Write();
}

bool CPanePlaces::IsFavourite(const PanePlace& place) const
{
    return Holds(favourites_, place);
}

void CPanePlaces::SetFavourites(const QList<PaneFavourite>& favourites)
{
    Read();
    favourites_ = favourites;
    Write();
}

void CPanePlaces::SetSearchesServer(bool whole)
{
    Read();
    searches_server_ = whole;
    Write();
}

void CPanePlaces::Visit(const PanePlace& place)
{
    Read();
    if (!recent_.isEmpty() && recent_.front() == place) {
        return;
    }
    recent_.removeOne(place);
    recent_.prepend(place);
    recent_ = recent_.first(std::min(recent_.size(), most_recent));
    Write();
}

void CPanePlaces::Read()
{
    QFile file(file_);
    if (file_.isEmpty() || !QFileInfo(file_).isFile() || file.size() > largest_file ||
        !file.open(QIODevice::ReadOnly)) {
        return;
    }
    const QJsonObject root = QJsonDocument::fromJson(file.readAll()).object();
    favourites_ = ReadEntries<PaneFavourite>(root[QLatin1String(favourites_key)], most_favourites);
    recent_ = ReadEntries<PanePlace>(root[QLatin1String(recent_key)], most_recent);
    searches_server_ = root[QLatin1String(whole_server_key)].toBool();
}

void CPanePlaces::Write() const
{
    if (file_.isEmpty()) {
        return;
    }
    QDir().mkpath(QFileInfo(file_).absolutePath());
    QSaveFile file(file_);
    if (!file.open(QIODevice::WriteOnly)) {
        return;
    }
    const QJsonObject root{{QLatin1String(favourites_key), EntriesArray(favourites_)},
                           {QLatin1String(recent_key), EntriesArray(recent_)},
                           {QLatin1String(whole_server_key), searches_server_}};
    file.write(QJsonDocument(root).toJson());
    file.commit();
}

} // namespace partkeep
