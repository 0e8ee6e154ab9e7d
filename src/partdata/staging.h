// The local side of fetching parts: flat folders under the process's working folder, what is cleared from them,
// what is found in them, and two temporary folders. Paths are joined as text and never normalised. What cannot be
// made or deleted is left as it is, without a word: the missing file shows when a part's files are looked for.
#pragma once

#include "partdata/part_record.h"
#include "platform/files.h"
#include "platform/messages.h"

#include <string>
#include <string_view>

namespace partkeep {

struct StagingFolders {
    std::u16string previewFolder; // without trailing separator
    std::u16string unpackFolder;  // with it until RemoveTempFolders cuts it
};

// Where the parts of a server's folder are staged, without trailing separator. Two folders whose names differ
// only in where their backslashes stand share one.
[[nodiscard]] std::u16string StagingFolderOf(std::u16string_view server, std::u16string_view last_folder);

// Makes the folder, one level only, unless something of that name exists.
void MakeFolder(std::u16string_view path);

// Deletes the files of a folder, not its subfolders. `folder` must end in its separator, else nothing happens.
void DeleteFolderFiles(std::u16string_view folder);

// Empties and removes both folders as far as they hold files alone.
void RemoveTempFolders(StagingFolders& folders);

// Makes way for a new copy of a part. `folder` ends in its separator.
void ClearStagedPart(std::u16string_view folder, std::u16string_view name);

// Deletes what belongs to the part in the working folder itself, not in a staging folder. An empty name deletes
// nothing.
void DeletePartFiles(std::u16string_view name);

// Puts the paths of the files that exist for record.PartName into the record; a field whose file is missing keeps
// what it held. False when there is none at all: the user has then been told and the part's leftovers and both
// temporary folders are gone. `folder` ends in its separator.
// The search serves for all parts of a Load; it forgets what it read when something was deleted here.
bool FindStagedFiles(std::u16string_view folder, PartRecord& record, StagingFolders& folders, IMessages& messages,
                     CFileSearch& search);

} // namespace partkeep
