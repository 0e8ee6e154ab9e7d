// The folder that holds the part libraries, one file a server: `<server>.kpl`. A server is found by its name,
// spelled exactly.
#pragma once

#include <QString>
#include <QStringList>

namespace partkeep {

class IRegistry;

// The configured folder as a native path: value `folder` of the key `software\Velmar\ORVIC\PartLibrary`, the
// user's before the machine's. Empty when neither is there.
[[nodiscard]] QString ConfiguredLibraryFolder(const IRegistry& registry);

class CLibraryFolder {
public:
    // A native path; empty text holds no server.
    explicit CLibraryFolder(QString path) : path_(std::move(path)) {}

    // The file for a server, whether it exists or not. Empty for a name that cannot be a server's.
    [[nodiscard]] QString FileOf(const QString& server) const;

    // The servers found, in natural order.
    [[nodiscard]] QStringList Servers() const;

    [[nodiscard]] const QString& Path() const { return path_; }

private:
    QString path_;
};

// The server that a library file stands for: its name without the extension.
[[nodiscard]] QString ServerOfFile(const QString& file);

} // namespace partkeep
