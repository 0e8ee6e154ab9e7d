// The folders of a whole library, for lists that go through all of them: their paths by id, and those that are shown to
// nobody because of their names, and their parts with them.
#pragma once

#include <QString>

#include <memory>
#include <unordered_map>

namespace partkeep {

class CConnection;

class CServerFolders {
public:
    // `known`, if it is of the library's present state. Null on an error.
    [[nodiscard]] static std::shared_ptr<const CServerFolders> Read(CConnection& connection,
                                                                    std::shared_ptr<const CServerFolders> known);

    // Null for a folder that is shown to nobody.
    [[nodiscard]] const QString* Path(qint64 folder) const;
    [[nodiscard]] const QString& Refused() const { return refused_; } // ids as a JSON array; empty: none
    [[nodiscard]] qint64 Parts() const { return parts_; }

private:
    bool Fill(CConnection& connection);

    qint64 state_ = 0;
    qint64 parts_ = 0;
    std::unordered_map<qint64, QString> paths_;
    QString refused_;
};

} // namespace partkeep
