#include "partlibrary/library_folder.h"

#include "partlibrary/library_names.h"
#include "partlibrary/sort_text.h"
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
            return QString::fromStdString(NativePath(*folder));
        }
    }
    return {};
}

QString CLibraryFolder::FileOf(const QString& server) const
{
    if (path_.isEmpty() || CheckName(server) != NameFault::None) {
        return {};
    }
    return path_ + u'/' + server + QString::fromUtf16(library_extension);
}

QStringList CLibraryFolder::Servers() const
{
    if (path_.isEmpty()) {
        return {};
    }
    std::vector<std::pair<QByteArray, QString>> found;
    for (const QString& file : QDir(path_).entryList({QStringLiteral("*.kpl")}, QDir::Files, QDir::NoSort)) {
        const QString server = ServerOfFile(file);
        if (CheckName(server) == NameFault::None) {
            found.emplace_back(NaturalKey(FoldText(server)), server);
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
    const QString extension = QString::fromUtf16(library_extension);
    return name.endsWith(extension) ? name.chopped(extension.size()) : name;
}

} // namespace partkeep
