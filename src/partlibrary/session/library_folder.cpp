#include "partlibrary/session/library_folder.h"

#include "partlibrary/library/library_names.h"
#include "partlibrary/library/library_text.h"
#include "partlibrary/library/sort_text.h"
#include "platform/files.h"
#include "platform/registry.h"

#include <QDir>
#include <QFileInfo>

#include <algorithm>
#include <utility>

namespace partkeep {

namespace {

constexpr std::u16string_view folder_key = u"software\\Velmar\\ORVIC\\PartLibrary";
constexpr std::u16string_view folder_value = u"folder";

} // namespace

QString ConfiguredLibraryFolder(const IRegistry& registry)
{
    for (const RegistryRoot root : {RegistryRoot::CurrentUser, RegistryRoot::LocalMachine}) {
        const auto folder = registry.ReadValue(root, folder_key, folder_value);
        if (folder && !folder->empty()) {
            return FromUtf8(NativePath(CorePath(ToUtf8(FromWide(*folder)))));
        }
    }
    return {};
}

QString CLibraryFolder::FileOf(const QString& server) const
{
    if (path_.isEmpty() || CheckName(server) != NameFault::None) {
        return {};
    }
    return path_ + u'/' + server + FromWide(library_extension);
}

QStringList CLibraryFolder::Servers() const
{
    if (path_.isEmpty()) {
        return {};
    }
    std::vector<std::pair<QByteArray, QString>> found;
    for (const QString& file : QDir(path_).entryList({QStringLiteral("*.kpl")}, QDir::Files, QDir::NoSort)) {
        const QString server = ServerOfFile(file);
        if (server != file && CheckName(server) == NameFault::None) { // the filter takes other cases too
            found.emplace_back(SortKey(server), server);
        }
    }
    std::sort(found.begin(), found.end());
    QStringList servers;
    for (const auto& entry : found) {
        servers += entry.second;
    }
    return servers;
}

QString ServerOfFile(const QString& file)
{
    const QString name = QFileInfo(file).fileName();
    const QString extension = FromWide(library_extension);
    return name.endsWith(extension) ? name.chopped(extension.size()) : name;
}

} // namespace partkeep
