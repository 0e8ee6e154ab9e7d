// Parts and folders as a command line names them: "Plates/2008/P1", "Plates/*/P?" and, with a separator at the end,
// "Plates/Old*/" for folders. Either separator will do. "*" stands for any characters of one component, "?" for one of
// them, and "**" as a component for any number of components. No name has these characters.
#pragma once

#include "partlibrary/library/library_problem.h"
#include "partlibrary/library/part_library.h"

#include <QRegularExpression>
#include <QString>
#include <QStringList>

#include <optional>
#include <vector>

namespace partkeep {

class CPlacePattern {
public:
    explicit CPlacePattern(QString text);

    [[nodiscard]] const QString& Text() const { return text_; } // the core's separators, none at the ends
    [[nodiscard]] bool OfFolders() const { return of_folders_; }
    [[nodiscard]] bool IsPlain() const { return plain_; }
    // What the wildcards of the last component stand for; nothing where the path is another.
    [[nodiscard]] std::optional<QStringList> Match(const QString& path) const;
    // Whether a folder may hold parts that match.
    [[nodiscard]] bool MayHold(const QString& folder) const;

private:
    QString text_;
    bool of_folders_ = false;
    bool plain_ = true;
    QRegularExpression whole_;
    QRegularExpression parent_;
};

struct FoundPlace {
    PartId part = 0; // 0: a folder
    qint64 folder = 0;
    QString path;
    QStringList wild;

    [[nodiscard]] QString Name() const { return path.sliced(path.lastIndexOf(u'\\') + 1); }
    [[nodiscard]] QString Parent() const { return path.left(std::max<qsizetype>(path.lastIndexOf(u'\\'), 0)); }
};

// What several patterns name counts where it is named first.
void KeepFirst(std::vector<FoundPlace>& places);

// Everything that the patterns name, each once; a folder without what is in it. NoPart or NoFolder where one of them
// names nothing.
[[nodiscard]] bool FindPlaces(IPartLibrary& library, const std::vector<CPlacePattern>& patterns,
                              std::vector<FoundPlace>& places, LibraryProblem& problem);

// A name in which each wildcard stands for what the pattern's stood for, in their order.
[[nodiscard]] QString FillWildcards(QStringView name, const QStringList& wild);

} // namespace partkeep
