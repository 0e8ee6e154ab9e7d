#include "desktop/pane/server_tree_model.h"

#include <QSet>

#include <algorithm>

namespace partkeep {

namespace {

enum Role { ServerRole = Qt::UserRole, FolderRole, HasFoldersRole, FetchedRole };

} // namespace

void CServerTreeModel::SetIcons(QIcon server, QIcon away, QIcon folder)
{
    server_icon_ = std::move(server);
    away_icon_ = std::move(away);
    folder_icon_ = std::move(folder);
}

QStandardItem* CServerTreeModel::MakeServer(const QString& server) const
{
    auto* item = new QStandardItem(server_icon_, server);
    item->setEditable(false);
    item->setData(server, ServerRole);
    item->setData(true, HasFoldersRole);
    return item;
}

QStandardItem* CServerTreeModel::MakeFolder(const QString& server, const FolderRow& row) const
{
    auto* item = new QStandardItem(folder_icon_, row.name);
    item->setEditable(false);
    item->setData(server, ServerRole);
    item->setData(row.path, FolderRole);
    item->setData(row.has_folders, HasFoldersRole);
    return item;
}

void CServerTreeModel::SetServers(const QStringList& servers)
{
    for (int row = rowCount() - 1; row >= 0; --row) {
        if (!servers.contains(ServerOf(index(row, 0)))) {
            removeRow(row);
        }
    }
    for (int row = 0; row < static_cast<int>(servers.size()); ++row) {
        const QString& server = servers[row];
        int old = row;
        while (old < rowCount() && ServerOf(index(old, 0)) != server) {
            ++old;
        }
        if (old == rowCount()) {
            insertRow(row, MakeServer(server));
        } else if (old != row) {
            insertRow(row, takeRow(old));
        }
    }
}

void CServerTreeModel::MarkServer(const QString& server, bool reached)
{
    for (int row = 0; row < rowCount(); ++row) {
        const bool current = ServerOf(index(row, 0)) == server;
        QFont font = item(row)->font();
        font.setBold(current);
        item(row)->setFont(font);
        if (current) {
            item(row)->setIcon(reached ? server_icon_ : away_icon_);
        }
    }
}

void CServerTreeModel::Forget()
{
    for (int row = 0; row < rowCount(); ++row) {
        item(row)->removeRows(0, item(row)->rowCount());
        item(row)->setData({}, FetchedRole);
        item(row)->setData(true, HasFoldersRole);
    }
}

bool CServerTreeModel::IsRead(const QModelIndex& branch)
{
    return branch.data(FetchedRole).toBool();
}

bool CServerTreeModel::Update(const QModelIndex& branch, const std::vector<FolderRow>& rows)
{
    QStandardItem& parent = *itemFromIndex(branch);
    QSet<QString> paths;
    std::for_each(rows.begin(), rows.end(), [&paths](const FolderRow& folder) { paths += folder.path; });
    bool changed = false;
    for (int row = parent.rowCount() - 1; row >= 0; --row) {
        if (!paths.contains(FolderOf(parent.child(row)->index()))) {
            parent.removeRow(row);
            changed = true;
        }
    }
    int place = 0;
    for (const FolderRow& folder : rows) {
        if (place == parent.rowCount() || FolderOf(parent.child(place)->index()) != folder.path) {
            parent.insertRow(place, MakeFolder(ServerOf(branch), folder));
            changed = true;
        }
        QStandardItem& item = *parent.child(place++);
        changed = changed || item.data(HasFoldersRole).toBool() != folder.has_folders;
        item.setData(folder.has_folders, HasFoldersRole);
    }
    changed = changed || place < parent.rowCount();
    parent.removeRows(place, parent.rowCount() - place); // those that stood elsewhere
    parent.setData(!rows.empty(), HasFoldersRole);
    return changed;
}

QString CServerTreeModel::ServerOf(const QModelIndex& index)
{
    return index.data(ServerRole).toString();
}

QString CServerTreeModel::FolderOf(const QModelIndex& index)
{
    return index.data(FolderRole).toString();
}

QModelIndex CServerTreeModel::Find(const QString& server, const QString& folder)
{
    QModelIndex found;
    for (int row = 0; row < rowCount(); ++row) {
        if (ServerOf(index(row, 0)) == server) {
            found = index(row, 0);
        }
    }
    for (bool deeper = found.isValid() && !folder.isEmpty(); deeper;) {
        fetchMore(found);
        deeper = false;
        for (int row = 0; row < rowCount(found) && !deeper; ++row) {
            const QModelIndex child = index(row, 0, found);
            const QString path = FolderOf(child);
            deeper = folder == path || folder.startsWith(path + u'\\');
            found = deeper ? child : found;
        }
        deeper = deeper && FolderOf(found) != folder;
    }
    return found;
}

bool CServerTreeModel::hasChildren(const QModelIndex& parent) const
{
    return !parent.isValid() || parent.data(HasFoldersRole).toBool();
}

bool CServerTreeModel::canFetchMore(const QModelIndex& parent) const
{
    return parent.isValid() && hasChildren(parent) && !parent.data(FetchedRole).toBool();
}

void CServerTreeModel::fetchMore(const QModelIndex& parent)
{
    if (!canFetchMore(parent)) {
        return;
    }
    QStandardItem* branch = itemFromIndex(parent);
    const QString server = ServerOf(parent);
    const auto rows = reader_(server, FolderOf(parent));
    if (!parent.parent().isValid()) {
        branch->setIcon(rows ? server_icon_ : away_icon_);
    }
    if (!rows) {
        return; // asked again when the branch opens again
    }
    branch->setData(true, FetchedRole);
    branch->setData(!rows->empty(), HasFoldersRole);
    QList<QStandardItem*> folders;
    for (const FolderRow& row : *rows) {
        folders += MakeFolder(server, row);
    }
    branch->appendRows(folders);
}

} // namespace partkeep
