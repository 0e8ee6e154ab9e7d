// What differs between two libraries, part by part, with little memory: both are gone through in the same order.
#pragma once

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

// Hands over each difference, by folders; false from there ends it. False on an error, or when it was ended.
bool CompareLibraries(IPartLibrary& first, IPartLibrary& second, const std::function<bool(const PartDifference&)>& each,
                      LibraryProblem& problem);

} // namespace partkeep
