#include "desktop/pane/key_sheet.h"

#include "desktop/qt_values.h"
#include "partlibrary/library/library_text.h"
#include "platform/companion_place.h"

#include <QApplication>
#include <QGridLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QScreen>

#include <array>
#include <vector>

namespace partkeep {

namespace {

struct KeyRow {
    const char16_t* keys;
    std::array<const char16_t*, 3> meaning; // by PaneLanguage
};

constexpr KeyRow key_rows[] = {
    {u"A–Z 0–9", {u"Search, from the list or the tree", u"一覧やツリーから検索", u"从列表或树中搜索"}},
    {u"↑ ↓", {u"In the search box: move in the list", u"検索ボックス: 一覧内を移動", u"在搜索框中：在列表中移动"}},
    {u"Shift+↑ ↓", {u"Select on", u"選択を広げる", u"扩展选择"}},
    {u"Space", {u"Choose a result of the whole server", u"サーバー全体の検索結果を選ぶ", u"选择整个服务器的搜索结果"}},
    {u"Ctrl+F", {u"To the search box", u"検索ボックスへ", u"转到搜索框"}},
    {u"Ctrl+Shift+F", {u"This folder or whole server", u"フォルダー内／サーバー全体", u"此文件夹／整个服务器"}},
    {u"Ctrl+D", {u"This folder to or from the favourites", u"お気に入りに追加・削除", u"加入或移出收藏夹"}},
    {u"Alt+↑", {u"The folder above", u"上のフォルダー", u"上一级文件夹"}},
    {u"Alt+←", {u"Back to the results", u"検索結果に戻る", u"返回搜索结果"}},
    {u"F5", {u"Read everything again", u"再読み込み", u"重新读取"}},
    {u"Ctrl+C", {u"Copy the names of selected parts", u"選択した部品名をコピー", u"复制所选零件的名称"}},
    {u"Ctrl+A", {u"Select all parts", u"すべての部品を選択", u"选择全部零件"}},
    {u"Enter", {u"OK: load", u"OK: 読み込み", u"确定：载入"}},
    {u"Esc", {u"Cancel", u"キャンセル", u"取消"}},
    {u"Alt+1 – Alt+4", {u"Machine filter", u"機械フィルター", u"机床筛选"}},
    {u"F6", {u"To the selected parts and back", u"選択部品ウィンドウとの切り替え", u"切换到所选零件窗口"}},
    {u"Delete", {u"Selected parts: remove", u"選択部品: 削除", u"所选零件：删除"}},
    {u"F2", {u"Selected parts: change the quantity", u"選択部品: 数量の変更", u"所选零件：修改数量"}},
    {u"Ctrl+Z", {u"Selected parts: put back what was removed", u"選択部品: 削除を元に戻す", u"所选零件：恢复已删除"}},
    {u"F1", {u"This sheet", u"この一覧", u"本表"}},
};

} // namespace

CKeySheet::CKeySheet(PaneLanguage language, QWidget* dialog)
    : QDialog(dialog, Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowCloseButtonHint)
{
    setAttribute(Qt::WA_DeleteOnClose);
    setAttribute(Qt::WA_ShowWithoutActivating);
    setWindowTitle(PaneString(PaneText::Keys, language));
    auto* grid = new QGridLayout(this);
    grid->setHorizontalSpacing(16);
    grid->setVerticalSpacing(3);
    int line = 0;
    for (const KeyRow& row : key_rows) {
        auto* keys = new QLabel(FromWide(row.keys), this);
        QFont bold = keys->font();
        bold.setBold(true);
        keys->setFont(bold);
        grid->addWidget(keys, line, 0);
        grid->addWidget(new QLabel(FromWide(row.meaning[static_cast<std::size_t>(language)]), this), line++, 1);
    }
    grid->setSizeConstraint(QLayout::SetFixedSize);
    grid->activate();
    PlaceBeside(*dialog);
}

void CKeySheet::PlaceBeside(const QWidget& dialog)
{
    const QRect owner = dialog.frameGeometry();
    const QSize border = owner.size() - dialog.size(); // that of this window is not known before it is shown
    const QSize own = sizeHint() + border;
    std::vector<Rect> stay_visible; // what stands beside the dialog already
    for (const QWidget* other : QApplication::topLevelWidgets()) {
        if (other != this && other->isVisible() && other->parentWidget() == &dialog) {
            stay_visible.push_back(ToRect(other->frameGeometry()));
        }
    }
    const Rect place = CompanionPlace(ToRect(owner), ToRect(dialog.screen()->availableGeometry()), own.width(),
                                      own.height(), stay_visible);
    move(place.left, place.top);
}

void CKeySheet::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_F1) {
        close();
        return;
    }
    QDialog::keyPressEvent(event);
}

} // namespace partkeep
