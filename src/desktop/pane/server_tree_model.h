// Servers and their folders as a tree; folders are read when a branch opens.
#pragma once

#include "partlibrary/library/part_library.h"

#include <QIcon>
#include <QStandardItemModel>
#include <QString>
#include <QStringList>

#include <functional>
#include <optional>
#include <vector>

namespace partkeep {

class CServerTreeModel : public QStandardItemModel {
public:
    // The folders in a folder of a server; nothing when the server cannot be reached.
    using FolderReader =
        std::function<std::optional<std::vector<FolderRow>>(const QString& server, const QString& folder)>;

    explicit CServerTreeModel(FolderReader reader) : reader_(std::move(reader)) {}

    void SetIcons(QIcon server, QIcon away, QIcon folder);

    // Keeps what is already open of servers that stay.
    void SetServers(const QStringList& servers);
    void MarkServer(const QString& server, bool reached);
    void Forget(); // what was read of the servers; it is read again when it is needed

    [[nodiscard]] static bool IsRead(const QModelIndex& branch); // the folders in it, that is
    // These are in it now; those that stay keep what is open of them. True when anything has changed.
    bool Update(const QModelIndex& branch, const std::vector<FolderRow>& rows);

    [[nodiscard]] static QString ServerOf(const QModelIndex& index);
    [[nodiscard]] static QString FolderOf(const QModelIndex& index); // empty: the server's root

    // The deepest entry on the way to a folder, opened as far as it exists. Invalid without such a server.
    [[nodiscard]] QModelIndex Find(const QString& server, const QString& folder);

    [[nodiscard]] bool hasChildren(const QModelIndex& parent = {}) const override;
    [[nodiscard]] bool canFetchMore(const QModelIndex& parent) const override;
    void fetchMore(const QModelIndex& parent) override;

private:
    [[nodiscard]] QStandardItem* MakeServer(const QString& server) const;
    [[nodiscard]] QStandardItem* MakeFolder(const QString& server, const FolderRow& row) const;

    FolderReader reader_;
    QIcon server_icon_;
    QIcon away_icon_;
    QIcon folder_icon_;
};

} // namespace partkeep
