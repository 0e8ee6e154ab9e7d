#include "partlibrary/sqlite/server_folders.h"

#include "partlibrary/sqlite/connection.h"
#include "partlibrary/sqlite/library_rows.h"

#include <QStringList>

namespace partkeep {

std::shared_ptr<const CServerFolders> CServerFolders::Read(CConnection& connection,
                                                           std::shared_ptr<const CServerFolders> known)
{
    const auto state = connection.State();
    if (!state) {
        return nullptr;
    }
    if (known != nullptr && known->state_ == *state) {
        return known;
    }
    auto folders = std::make_shared<CServerFolders>();
    folders->state_ = *state;
    return folders->Fill(connection) ? folders : nullptr;
}

bool CServerFolders::Fill(CConnection& connection)
{
    CStatement rows(connection, std::string("SELECT ") + folder_row_columns + " FROM folder");
    QStringList refused;
    FolderRow row;
    while (rows.Next()) {
        const RowFault fault = ReadFolderRow(rows, row);
        if (fault == RowFault::Damaged) {
            connection.SetProblem(DamagedRow(connection));
            return false;
        }
        if (fault == RowFault::Refused) {
            refused += QString::number(row.id);
            connection.CountRefused(-row.id);
            continue;
        }
        parts_ += row.parts;
        paths_.emplace(row.id, row.path);
    }
    refused_ = refused.isEmpty() ? QString() : u'[' + refused.join(u',') + u']';
    return !rows.Failed();
}

const QString* CServerFolders::Path(qint64 folder) const
{
    const auto found = paths_.find(folder);
    return found != paths_.end() ? &found->second : nullptr;
}

} // namespace partkeep
