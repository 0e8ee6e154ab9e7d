#include "partlibrary/tool/place_pattern.h"

#include "partlibrary/library/library_names.h"
#include "partlibrary/library/library_walk.h"

#include <set>
#include <utility>

namespace partkeep {

namespace {

bool IsWild(QStringView text)
{
    return text.contains(u'*') || text.contains(u'?');
}

// One component; each wildcard of the last one is a group.
QString ComponentExpression(QStringView component, bool last)
{
    QString expression;
    for (const QChar unit : component) {
        const QString wild = unit == u'*' ? QStringLiteral("[^\\\\]*") : QStringLiteral("[^\\\\]");
        expression += !IsWild(QStringView(&unit, 1)) ? QRegularExpression::escape(unit)
                      : last                         ? u'(' + wild + u')'
                                                     : wild;
    }
    return expression;
}

// "**" takes its separator along, so that it may stand for nothing.
QString PathExpression(const QList<QStringView>& components)
{
    QString expression;
    bool separate = false;
    for (const QStringView& component : components) {
        const bool any = component == u"**";
        expression += separate ? QStringLiteral("\\\\") : QString();
        expression += any ? QStringLiteral("(?:[^\\\\]+\\\\)*")
                          : ComponentExpression(component, &component == &components.back());
        separate = !any;
    }
    return expression;
}

QRegularExpression Whole(const QString& expression)
{
    return QRegularExpression(QRegularExpression::anchoredPattern(expression),
                              QRegularExpression::DotMatchesEverythingOption);
}

bool AddPlain(IPartLibrary& library, const CPlacePattern& pattern, std::vector<FoundPlace>& places)
{
    const FoundPlace place{0, 0, pattern.Text(), {}};
    if (pattern.OfFolders()) {
        const auto folder = library.FindFolder(pattern.Text());
        if (folder) {
            places.push_back({0, folder->id, folder->path, {}});
        }
        return folder.has_value();
    }
    const auto part = library.FindPart(place.Parent(), place.Name());
    if (part) {
        places.push_back({part->id, part->folder, place.path, {}});
    }
    return part.has_value();
}

bool AddParts(IPartLibrary& library, const CPlacePattern& pattern, const FolderRow& folder,
              std::vector<FoundPlace>& places)
{
    return ForEachPart(library, folder.id, [&](const PartRow& row) {
        const QString path = JoinPath(folder.path, row.name);
        if (const auto wild = pattern.Match(path)) {
            places.push_back({row.id, folder.id, path, *wild});
        }
        return true;
    });
}

bool AddMatching(IPartLibrary& library, const CPlacePattern& pattern, std::vector<FoundPlace>& places)
{
    const auto folders = AllFolders(library);
    if (!folders) {
        return false;
    }
    for (const FolderRow& folder : *folders) {
        const auto wild = pattern.OfFolders() && !folder.path.isEmpty() ? pattern.Match(folder.path) : std::nullopt;
        if (wild) {
            places.push_back({0, folder.id, folder.path, *wild});
        }
        if (!pattern.OfFolders() && pattern.MayHold(folder.path) && !AddParts(library, pattern, folder, places)) {
            return false;
        }
    }
    return true;
}

} // namespace

CPlacePattern::CPlacePattern(QString text)
{
    text.replace(u'/', u'\\');
    of_folders_ = text.endsWith(u'\\');
    text_ = FolderPath(text);
    plain_ = !IsWild(text_);
    QList<QStringView> components = QStringView(text_).split(u'\\');
    const bool any_tail = components.back() == u"**"; // "A/**": everything below
    if (any_tail) {
        components.push_back(QStringView(u"*"));
    }
    whole_ = Whole(PathExpression(components));
    components.pop_back();
    QString parent = PathExpression(components);
    parent += components.isEmpty() || components.back() == u"**" ? QString() : QStringLiteral("\\\\");
    parent_ = Whole(parent);
}

std::optional<QStringList> CPlacePattern::Match(const QString& path) const
{
    const QRegularExpressionMatch match = whole_.match(path);
    return match.hasMatch() ? std::optional(match.capturedTexts().sliced(1)) : std::nullopt;
}

bool CPlacePattern::MayHold(const QString& folder) const
{
    return parent_.match(folder.isEmpty() ? folder : folder + u'\\').hasMatch();
}

void KeepFirst(std::vector<FoundPlace>& places)
{
    std::set<std::pair<PartId, qint64>> known;
    std::erase_if(places, [&known](const FoundPlace& place) {
        return !known.emplace(place.part, place.part == 0 ? place.folder : 0).second;
    });
}

bool FindPlaces(IPartLibrary& library, const std::vector<CPlacePattern>& patterns, std::vector<FoundPlace>& places,
                LibraryProblem& problem)
{
    for (const CPlacePattern& pattern : patterns) {
        const std::size_t before = places.size();
        const bool read =
            pattern.IsPlain() ? AddPlain(library, pattern, places) : AddMatching(library, pattern, places);
        if (!read) {
            problem = library.Problem();
            return false;
        }
        if (places.size() == before) {
            problem = {pattern.OfFolders() ? LibraryFault::NoFolder : LibraryFault::NoPart, pattern.Text(), {}};
            return false;
        }
    }
    KeepFirst(places);
    return true;
}

QString FillWildcards(QStringView name, const QStringList& wild)
{
    QString filled;
    qsizetype next = 0;
    for (const QChar unit : name) {
        const bool stands_for = (unit == u'*' || unit == u'?') && next < wild.size();
        filled += stands_for ? wild[next++] : QString(unit);
    }
    return filled;
}

} // namespace partkeep
