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
constexpr std::u16string_view services_value = u"services";

// The user's before the machine's.
QString Configured(const IRegistry& registry, std::u16string_view value)
{
    for (const RegistryRoot root : {RegistryRoot::CurrentUser, RegistryRoot::LocalMachine}) {
        const auto text = registry.ReadValue(root, folder_key, value);
        if (text && !text->empty()) {
            return FromWide(*text);
        }
    }
    return {};
}

} // namespace

QString ConfiguredLibraryFolder(const IRegistry& registry)
{
    const QString folder = Configured(registry, folder_value);
    return folder.isEmpty() ? folder : FromUtf8(NativePath(CorePath(ToUtf8(folder))));
}

QStringList ConfiguredServices(const IRegistry& registry)
{
    return Configured(registry, services_value).replace(u',', u' ').split(u' ', Qt::SkipEmptyParts);
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
    const QStringList files =
        path_.isEmpty() ? QStringList() : QDir(path_).entryList({QStringLiteral("*.kpl")}, QDir::Files, QDir::NoSort);
    std::vector<std::pair<QByteArray, QString>> found;
    for (const QString& server : services_ != nullptr ? services_->Servers() : QStringList()) {
        found.emplace_back(SortKey(server), server);
    }
    for (const QString& file : files) {
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
    servers.removeDuplicates();
    return servers;
}

QString ServerOfFile(const QString& file)
{
    const QString name = QFileInfo(file).fileName();
    const QString extension = FromWide(library_extension);
    return name.endsWith(extension) ? name.chopped(extension.size()) : name;
}

} // namespace partkeep
