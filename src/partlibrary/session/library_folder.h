// Where the part libraries are: in a folder, one file a server: `<server>.kpl`, and in databases, where services lead
// to them. A server is found by its name, spelled exactly; a file goes before a database.
#pragma once

#include "partlibrary/cache/content_cache.h"
#include "partlibrary/session/service_servers.h"

#include <QString>
#include <QStringList>

#include <memory>

namespace partkeep {

class IRegistry;

// The configured folder as a native path: value `folder` of the key `software\Velmar\ORVIC\PartLibrary`, the
// user's before the machine's. Empty when neither is there.
[[nodiscard]] QString ConfiguredLibraryFolder(const IRegistry& registry);

// The configured services: value `services` of that key, names with commas or blanks between them.
[[nodiscard]] QStringList ConfiguredServices(const IRegistry& registry);

class CLibraryFolder {
public:
    // A native path; empty text holds no server. What comes from databases is kept in the cache.
    explicit CLibraryFolder(QString path, const QStringList& services = {}, CacheSettings cache = {})
        : path_(std::move(path)), services_(services.isEmpty() ? nullptr : std::make_shared<CServiceServers>(services)),
          cache_(cache.most_bytes > 0 ? std::make_shared<CContentCache>(std::move(cache)) : nullptr)
    {
    }
    [[nodiscard]] static CLibraryFolder Configured(const IRegistry& registry)
    {
        return CLibraryFolder(ConfiguredLibraryFolder(registry), ConfiguredServices(registry),
                              ConfiguredCache(registry));
    }
    [[nodiscard]] bool IsConfigured() const { return !path_.isEmpty() || services_ != nullptr; }
    [[nodiscard]] CServiceServers* Services() const { return services_.get(); } // null: none are configured

    [[nodiscard]] const std::shared_ptr<CContentCache>& Cache() const { return cache_; } // null: none

    // The file for a server, whether it exists or not. Empty for a name that cannot be a server's.
    [[nodiscard]] QString FileOf(const QString& server) const;

    // The servers found, in natural order.
    [[nodiscard]] QStringList Servers() const;

    [[nodiscard]] const QString& Path() const { return path_; }

private:
    QString path_;
    std::shared_ptr<CServiceServers> services_;
    std::shared_ptr<CContentCache> cache_;
};

// The server that a library file stands for: its name without the extension.
[[nodiscard]] QString ServerOfFile(const QString& file);

} // namespace partkeep
