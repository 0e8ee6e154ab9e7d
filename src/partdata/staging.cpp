#include "partdata/staging.h"

#include "partdata/plain_message.h"
#include "partdata/staged_names.h"
#include "platform/files.h"
#include "settings/process_values.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <vector>

namespace partkeep {

namespace {

// A text of separators alone comes from joining onto a folder that was never set. It would mean the root of the
// file system, where nothing is ours to delete.
std::vector<std::u16string> ListForDeletion(std::u16string_view folder, const PathFilter& wanted)
{
    if (folder.find_first_not_of(path_separator) == std::u16string_view::npos) {
        return {};
    }
    return ListFolder(folder, wanted);
}

std::optional<std::u16string> ExistingFile(CFileSearch& search, std::u16string path)
{
    return search.FileExists(path) ? std::optional(std::move(path)) : std::nullopt;
}

} // namespace

std::u16string StagingFolderOf(std::u16string_view server, std::u16string_view last_folder)
{
    std::u16string path = TheProcessValues().workingFolder;
    path += server;
    std::remove_copy(last_folder.begin(), last_folder.end(), std::back_inserter(path), path_separator);
    return path;
}

void MakeFolder(std::u16string_view path)
{
    if (!PathExists(path)) {
        MakeDirectory(path);
    }
}

void DeleteFolderFiles(std::u16string_view folder)
{
    for (const std::u16string& path : ListForDeletion(folder, [](std::u16string_view) { return true; })) {
        RemoveFile(path);
    }
}

void RemoveTempFolders(StagingFolders& folders)
{
    DeleteFolderFiles(folders.previewFolder + path_separator);
    RemoveEmptyDirectory(folders.previewFolder);
    DeleteFolderFiles(folders.unpackFolder);
    // Cut in place: from the second time on the folder is not searched any more, only removed.
    folders.unpackFolder.erase(folders.unpackFolder.find_last_not_of(path_separator) + 1);
    RemoveEmptyDirectory(folders.unpackFolder);
}

void ClearStagedPart(std::u16string_view folder, std::u16string_view name)
{
    const auto wanted = [name](std::u16string_view path) { return IsClearedBeforeStaging(path, name); };
    for (const std::u16string& path : ListForDeletion(folder, wanted)) {
        RemoveFile(path);
    }
}

void DeletePartFiles(std::u16string_view name)
{
    if (name.empty()) {
        return;
    }
    const auto wanted = [name](std::u16string_view path) { return IsDeletedWithPart(path, name); };
    for (const std::u16string& path : ListForDeletion(TheProcessValues().workingFolder + path_separator, wanted)) {
        RemoveFile(path);
    }
}

bool FindStagedFiles(std::u16string_view folder, PartRecord& record, StagingFolders& folders, IMessages& messages,
                     CFileSearch& search)
{
    const std::u16string stem = std::u16string(folder) + record.PartName;
    const auto iga = ExistingFile(search, stem + u".iga");
    const auto bmf = ExistingFile(search, stem + u".bmf");
    const auto sy5 = ExistingFile(search, stem + u".SY5");
    const auto ncd = ExistingFile(search, stem + u".NCD");
    if (!iga && !bmf && !sy5 && !ncd) {
        ShowPlainMessage(messages, LoadLocalString(LocalString::NoFilesFound) + record.PartName);
        DeletePartFiles(record.PartName);
        RemoveTempFolders(folders);
        search.Forget();
        return false;
    }
    record.FilePathName = iga ? *iga : bmf.value_or(record.FilePathName);
    record.SYFileName = sy5.value_or(record.SYFileName);
    record.NCFileName = ncd.value_or(record.NCFileName);
    return true;
}

} // namespace partkeep
