#include "desktop/pane/pane_texts.h"

#include "partlibrary/library/library_text.h"

#include <QLocale>

#include <array>

namespace partkeep {

namespace {

// English, Japanese, simplified Chinese.
using Row = std::array<const char16_t*, 3>;

constexpr std::array<Row, static_cast<std::size_t>(PaneText::Count)> texts{{
    {u"Part browser", u"部品ブラウザー", u"零件浏览器"},
    {u"Servers and folders", u"サーバーとフォルダー", u"服务器和文件夹"},
    {u"Parts", u"部品", u"零件"},
    {u"Search", u"検索", u"搜索"},
    {u"Search in this folder", u"このフォルダーを検索", u"在此文件夹中搜索"},
    {u"Clear the search", u"検索をクリア", u"清除搜索"},
    {u"Places", u"場所", u"位置"},
    {u"Favourites", u"お気に入り", u"收藏夹"},
    {u"Recent folders", u"最近使ったフォルダー", u"最近的文件夹"},
    {u"Add this folder to the favourites", u"このフォルダーをお気に入りに追加", u"将此文件夹加入收藏夹"},
    {u"Remove this folder from the favourites", u"このフォルダーをお気に入りから削除", u"从收藏夹移除此文件夹"},
    {u"No favourites yet", u"お気に入りはまだありません", u"尚无收藏"},
    {u"Columns", u"列", u"列"},
    {u"Export", u"書き出し", u"导出"},
    {u"Export the list", u"一覧の書き出し", u"导出列表"},
    {u"CSV table (*.csv)", u"CSV 表 (*.csv)", u"CSV 表格 (*.csv)"},
    {u"The list could not be written to %1.", u"一覧を %1 に書き込めませんでした。", u"无法将列表写入 %1。"},
    {u"Try again", u"再試行", u"重试"},
    {u"Name", u"部品名", u"零件名称"},
    {u"Thickness (mm)", u"板厚 (mm)", u"板厚 (mm)"},
    {u"Thickness (inch)", u"板厚 (inch)", u"板厚 (inch)"},
    {u"Material", u"材質", u"材质"},
    {u"Machine", u"機械", u"机床"},
    {u"Comment", u"コメント", u"注释"},
    {u"Pictures", u"画像", u"图片"},
    {u"Sort ascending", u"昇順に並べ替え", u"升序排序"},
    {u"Sort descending", u"降順に並べ替え", u"降序排序"},
    {u"Move to the left", u"左へ移動", u"左移"},
    {u"Move to the right", u"右へ移動", u"右移"},
    {u"Wider", u"広くする", u"加宽"},
    {u"Narrower", u"狭くする", u"变窄"},
    {u"%1 parts", u"部品 %1 件", u"%1 个零件"},
    {u"%1 parts so far …", u"部品 %1 件 (検索中 …)", u"已找到 %1 个零件 …"},
    {u"%1 selected", u"%1 件を選択", u"已选择 %1 个"},
    {u"Copying %1 …", u"%1 をコピー中 …", u"正在复制 %1 …"},
    {u"(deleted)", u"(削除済み)", u"(已删除)"},
    {u"No server found in %1.\nPut a part library there, then choose Try again.",
     u"%1 にサーバーが見つかりません。\n部品ライブラリを置いてから「再試行」を選んでください。",
     u"在 %1 中找不到服务器。\n请放入零件库，然后选择“重试”。"},
    {u"No folder with part libraries is set up.\nAsk whoever looks after this installation.",
     u"部品ライブラリのフォルダーが設定されていません。\n管理者に連絡してください。",
     u"尚未设置零件库文件夹。\n请联系管理员。"},
    {u"Choose a server on the left to see its parts.", u"左側でサーバーを選ぶと部品が表示されます。",
     u"请在左侧选择服务器以查看零件。"},
    {u"This folder has no parts.\nChoose another folder on the left.",
     u"このフォルダーには部品がありません。\n左側で別のフォルダーを選んでください。",
     u"此文件夹中没有零件。\n请在左侧选择其他文件夹。"},
    {u"No part here has files for this machine.\nChoose another filter above.",
     u"この機械用のファイルを持つ部品はありません。\n上で別のフィルターを選んでください。",
     u"此处没有适用于该机床的零件。\n请在上方选择其他筛选。"},
    {u"No part matches “%1”.\nClear the search to see all parts.",
     u"「%1」に一致する部品はありません。\n検索をクリアするとすべて表示されます。",
     u"没有与“%1”匹配的零件。\n清除搜索可查看全部零件。"},
    {u"Server %1 cannot be reached: its library is not there.",
     u"サーバー %1 に接続できません: ライブラリが見つかりません。", u"无法连接服务器 %1：找不到其零件库。"},
    {u"Server %1 is in use by another program. Try again in a moment.",
     u"サーバー %1 は別のプログラムが使用中です。しばらくしてから再試行してください。",
     u"服务器 %1 正被其他程序使用。请稍后重试。"},
    {u"Server %1 was left in the middle of a change that can only be taken back by somebody who may write there.",
     u"サーバー %1 は変更の途中で中断されています。書き込み権限のあるユーザーだけが元に戻せます。",
     u"服务器 %1 的更改被中断，只有具有写入权限的用户才能恢复。"},
    {u"The library of server %1 was replaced. Try again to see the new one.",
     u"サーバー %1 のライブラリが置き換えられました。再試行すると新しいものが表示されます。",
     u"服务器 %1 的零件库已被替换。请重试以查看新的零件库。"},
    {u"since %1", u"%1 から", u"自 %1 起"},
    {u"%1 entries have names that are not allowed and are not shown.",
     u"使用できない名前の項目が %1 件あり、表示されていません。", u"有 %1 个条目的名称不被允许，未显示。"},
    {u"Lists of server %1 are slow until somebody runs partkeep-library check --rebuild on its library.",
     u"サーバー %1 の一覧は、ライブラリに partkeep-library check --rebuild を実行するまで遅くなります。",
     u"在对其零件库运行 partkeep-library check --rebuild 之前，服务器 %1 的列表较慢。"},
    {u"The library of server %1 is damaged.", u"サーバー %1 のライブラリが破損しています。",
     u"服务器 %1 的零件库已损坏。"},
    {u"The library of server %1 cannot be read by this version.",
     u"サーバー %1 のライブラリはこのバージョンでは読めません。", u"此版本无法读取服务器 %1 的零件库。"},
    {u"The library of server %1 cannot be opened.", u"サーバー %1 のライブラリを開けません。",
     u"无法打开服务器 %1 的零件库。"},
    {u"That folder is no longer there.", u"そのフォルダーはもうありません。", u"该文件夹已不存在。"},
    {u"A part is no longer there.", u"部品が見つかりません。", u"有零件已不存在。"},
    {u"The files of %1 could not be copied.", u"%1 のファイルをコピーできませんでした。", u"无法复制 %1 的文件。"},
    {u"Server %1 does not answer as it should.", u"サーバー %1 が正しく応答しません。", u"服务器 %1 响应异常。"},
    {u"Search in the whole server", u"サーバー全体を検索", u"在整个服务器中搜索"},
    {u"This folder", u"フォルダー内", u"此文件夹"},
    {u"Whole server", u"サーバー全体", u"整个服务器"},
    {u"Search in this folder or in the whole server (Ctrl+Shift+F)",
     u"このフォルダーまたはサーバー全体を検索 (Ctrl+Shift+F)", u"在此文件夹或整个服务器中搜索 (Ctrl+Shift+F)"},
    {u"Narrow", u"絞り込み", u"筛选"},
    {u"All", u"すべて", u"全部"},
    {u"Nothing to choose from", u"選べる項目はありません", u"没有可选项"},
    {u"No part here is like that.\nChoose All under Narrow.",
     u"条件に合う部品はありません。\n「絞り込み」で「すべて」を選んでください。",
     u"此处没有符合条件的零件。\n请在“筛选”中选择“全部”。"},
    {u"%1 parts in the whole server", u"サーバー全体で部品 %1 件", u"整个服务器中有 %1 个零件"},
    {u"%1 parts in the whole server so far …", u"サーバー全体で部品 %1 件 (検索中 …)",
     u"整个服务器中已找到 %1 个零件 …"},
    {u"choose one to go to its folder", u"選ぶとそのフォルダーへ移動します", u"选择一个即可转到其文件夹"},
    {u"%1, in %2", u"%1、場所 %2", u"%1，位于 %2"},
    {u"Folder", u"フォルダー", u"文件夹"},
    {u"Copy the name", u"部品名をコピー", u"复制名称"},
    {u"Go to its folder", u"フォルダーへ移動", u"转到其文件夹"},
    {u"Export the selection", u"選択した部品の書き出し", u"导出所选零件"},
    {u"Parts", u"部品一覧", u"零件列表"},
    {u"%1 parts were written to %2.", u"部品 %1 件を %2 に書き込みました。", u"已将 %1 个零件写入 %2。"},
    {u"No pictures", u"画像なし", u"无图片"},
    {u"Small pictures", u"小さい画像", u"小图片"},
    {u"Medium pictures", u"中くらいの画像", u"中等图片"},
    {u"Large pictures", u"大きい画像", u"大图片"},
    {u"Arrange the favourites", u"お気に入りの整理", u"整理收藏夹"},
    {u"Up", u"上へ", u"上移"},
    {u"Down", u"下へ", u"下移"},
    {u"Rename", u"名前の変更", u"重命名"},
    {u"Remove", u"削除", u"删除"},
    {u"Close", u"閉じる", u"关闭"},
    {u"Keys", u"キー操作", u"快捷键"},
    {u"F1 shows the keys", u"F1 でキー操作を表示", u"按 F1 显示快捷键"},
}};

} // namespace

PaneLanguage PaneLanguageOf(std::int32_t language_id)
{
    if (language_id >= 1 && language_id <= 3) {
        return static_cast<PaneLanguage>(language_id - 1);
    }
    switch (QLocale::system().language()) {
    case QLocale::Japanese:
        return PaneLanguage::Japanese;
    case QLocale::Chinese:
        return PaneLanguage::Chinese;
    default:
        return PaneLanguage::English;
    }
}

QString PaneString(PaneText text, PaneLanguage language)
{
    return FromWide(texts[static_cast<std::size_t>(text)][static_cast<std::size_t>(language)]);
}

} // namespace partkeep
