// Goes through a library with little memory, whatever engine holds it.
#pragma once

#include "partlibrary/library/part_library.h"

#include <functional>
#include <optional>
#include <vector>

namespace partkeep {

// A folder and all inside it, each before those inside it, in natural order. Nothing on an error.
[[nodiscard]] std::optional<std::vector<FolderRow>> AllFolders(IPartLibrary& library, const QString& from = {});

// Hands over each part of a folder, by the bytes of the names. False on an error, and where `each` says so.
bool ForEachPart(IPartLibrary& library, qint64 folder, const std::function<bool(const PartRow&)>& each);

} // namespace partkeep
