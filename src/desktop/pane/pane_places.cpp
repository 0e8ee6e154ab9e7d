#include "desktop/pane/pane_places.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSaveFile>
#include <QStandardPaths>

namespace partkeep {

namespace {

constexpr qsizetype most_recent = 12;
constexpr qsizetype most_favourites = 40;
constexpr qint64 largest_file = 1 << 20;
constexpr auto favourites_key = "favourites";
constexpr auto recent_key = "recent";
constexpr auto server_key = "server";
constexpr auto folder_key = "folder";

QList<PanePlace> ReadPlaces(const QJsonValue& value, qsizetype most)
{
    QList<PanePlace> places;
    for (const auto& entry : value.toArray()) {
        const PanePlace place{entry[QLatin1String(server_key)].toString(), entry[QLatin1String(folder_key)].toString()};
        if (!place.server.isEmpty() && !places.contains(place) && places.size() < most) {
            places += place;
        }
    }
    return places;
}

QJsonArray PlacesArray(const QList<PanePlace>& places)
{
    QJsonArray array;
    for (const PanePlace& place : places) {
        array += QJsonObject{{QLatin1String(server_key), place.server}, {QLatin1String(folder_key), place.folder}};
    }
    return array;
}

} // namespace

QString CPanePlaces::UsersFile()
{
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation);
    return folder.isEmpty() ? QString() : folder + QStringLiteral("/partkeep-read/browser.json");
}

void CPanePlaces::ToggleFavourite(const PanePlace& place)
{
    Read();
    if (!favourites_.removeOne(place)) {
        favourites_ += place;
        favourites_ = favourites_.last(std::min(favourites_.size(), most_favourites));
    }
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
    favourites_ = ReadPlaces(root[QLatin1String(favourites_key)], most_favourites);
    recent_ = ReadPlaces(root[QLatin1String(recent_key)], most_recent);
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
    file.write(QJsonDocument(QJsonObject{{QLatin1String(favourites_key), PlacesArray(favourites_)},
                                         {QLatin1String(recent_key), PlacesArray(recent_)}})
                   .toJson());
    file.commit();
}

} // namespace partkeep
