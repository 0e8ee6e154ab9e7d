// What differs between two libraries, part by part, with little memory: both are gone through in the same order.
#pragma once

#include "partlibrary/library/library_admin.h"
#include "partlibrary/library/library_problem.h"

#include <QString>
#include <QStringList>

#include <functional>

namespace partkeep {

class IPartLibrary;

struct PartDifference {
    QString path;          // of the part; of a folder, with a separator at its end
    QStringList fields;    // that differ, of a part that both have
    bool in_first = false; // of one that only one of them has
};

// Hands over each difference, by folders. False on an error, or where `progress`, by the parts of both, has ended it.
bool CompareLibraries(IPartLibrary& first, IPartLibrary& second, const std::function<void(const PartDifference&)>& each,
                      const WorkProgress& progress, LibraryProblem& problem);

} // namespace partkeep
