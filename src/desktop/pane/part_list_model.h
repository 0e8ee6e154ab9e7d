// The list of parts as a table: rows are read page by page as they are shown, and only the last few pages are kept.
#pragma once

#include "desktop/pane/pane_texts.h"
#include "partlibrary/session/browser_session.h"

#include <QAbstractTableModel>
#include <QCache>
#include <QPixmap>
#include <QString>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace partkeep {

inline constexpr int part_columns = 5; // those of PartColumn, in its order

// Beside what the toolkit asks for: a row's part, and in the first column of a list of all folders its folder.
inline constexpr int part_role = Qt::UserRole;
inline constexpr int folder_role = Qt::UserRole + 1;

// A thickness of 1/10000 mm as the list shows it.
[[nodiscard]] QString ThicknessText(std::int32_t thickness, DisplayUnit unit);

class CPartListModel : public QAbstractTableModel {
public:
    explicit CPartListModel(PaneLanguage language) : language_(language) {}

    // Shows nothing.
    void Clear();
    void SetServer(const QString& server) { server_ = server; } // for the next start
    // Begins anew; nothing is read yet. `narrowed`: the user has typed on, and what the list holds now may be all there
    // is to look at.
    void Start(std::shared_ptr<IPartLibrary> library, const PartListView& view, qint64 parts_in_folder,
               DisplayUnit unit, bool narrowed);
    // Scans one slice and shows what it found. False when there is nothing left to scan.
    bool Step();
    void Finish();

    [[nodiscard]] const IPartLibrary* Library() const { return library_.get(); } // whose rows these are; null: none
    [[nodiscard]] const PartListView* View() const { return pages_ != nullptr ? &pages_->View() : nullptr; }
    [[nodiscard]] bool Started() const { return pages_ != nullptr; }
    [[nodiscard]] bool Complete() const { return pages_ == nullptr || pages_->Complete(); }
    // Reading has failed: nothing more is read until the next start. The library holds the problem.
    [[nodiscard]] bool Failed() const { return failed_; }
    void SetFailureSink(std::function<void()> sink) { failure_ = std::move(sink); }

    // Picture of a part for the first column; may be null.
    void SetPictures(std::function<QPixmap(const PartRow&)> pictures) { pictures_ = std::move(pictures); }
    void PictureArrived(PartId part);

    // Null for a row that cannot be read.
    [[nodiscard]] const PartRow* Row(int row) const;
    [[nodiscard]] std::vector<PartId> Ids(qint64 first, qint64 count) const;
    [[nodiscard]] std::optional<qint64> RowOf(PartId part) const;
    [[nodiscard]] PartId PartAt(int row) const; // 0: none
    [[nodiscard]] bool ShowsAllFolders() const { return View() != nullptr && View()->folder == all_folders; }
    [[nodiscard]] QString FolderHeader() const { return PaneString(PaneText::Folder, language_); }
    [[nodiscard]] QString FolderText(const PartRow& row) const; // empty in a list of one folder
    [[nodiscard]] QString CellText(const PartRow& row, PartColumn column) const;
    [[nodiscard]] QString HeaderText(PartColumn column) const;

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] int columnCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
    [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

private:
    using Page = std::vector<PartRow>;

    [[nodiscard]] QVariant RowData(const PartRow& row, PartColumn column, int role) const;
    void ShowFound();
    void Fail() const;

    PaneLanguage language_;
    DisplayUnit unit_ = DisplayUnit::Metric;
    QString server_;
    std::shared_ptr<IPartLibrary> library_;
    std::unique_ptr<IPartListing> pages_;
    int rows_ = 0; // told to the views
    mutable QCache<int, Page> cache_;
    mutable bool failed_ = false;
    std::function<void()> failure_;
    std::function<QPixmap(const PartRow&)> pictures_;
};

} // namespace partkeep
