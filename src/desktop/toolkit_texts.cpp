#include "desktop/toolkit_texts.h"

#include "desktop/interface_language.h"
#include "partlibrary/library/library_text.h"
#include "platform/text.h"
#include "settings/process_values.h"

#include <QCoreApplication>
#include <QLibraryInfo>
#include <QTranslator>

#include <algorithm>
#include <memory>
#include <string_view>

namespace partkeep {

namespace {

struct ToolkitText {
    std::string_view source;
    const char16_t* japanese;
    const char16_t* chinese;
};

// As the toolkit has them, marks of access keys included; a key in brackets stands where the script has no letters.
constexpr ToolkitText toolkit_texts[] = {
    // Fields.
    {"&Undo", u"元に戻す(&U)", u"撤销(&U)"},
    {"&Redo", u"やり直す(&R)", u"重做(&R)"},
    {"Cu&t", u"切り取り(&T)", u"剪切(&T)"},
    {"&Copy", u"コピー(&C)", u"复制(&C)"},
    {"Copy &Link Location", u"リンクの場所をコピー(&L)", u"复制链接地址(&L)"},
    {"&Paste", u"貼り付け(&P)", u"粘贴(&P)"},
    {"Delete", u"削除", u"删除"},
    {"Select All", u"すべて選択", u"全选"},
    // Buttons.
    {"OK", u"OK", u"确定"},
    {"&OK", u"OK(&O)", u"确定(&O)"},
    {"Save", u"保存", u"保存"},
    {"&Save", u"保存(&S)", u"保存(&S)"},
    {"Open", u"開く", u"打开"},
    {"&Open", u"開く(&O)", u"打开(&O)"},
    {"Cancel", u"キャンセル", u"取消"},
    {"&Cancel", u"キャンセル(&C)", u"取消(&C)"},
    {"Close", u"閉じる", u"关闭"},
    {"&Close", u"閉じる(&C)", u"关闭(&C)"},
    {"&Yes", u"はい(&Y)", u"是(&Y)"},
    {"&No", u"いいえ(&N)", u"否(&N)"},
    // File dialog.
    {"Look in:", u"場所:", u"查找范围:"},
    {"Back", u"戻る", u"后退"},
    {"Go back", u"戻る", u"后退"},
    {"Alt+Left", u"Alt+Left", u"Alt+Left"},
    {"Forward", u"進む", u"前进"},
    {"Go forward", u"進む", u"前进"},
    {"Alt+Right", u"Alt+Right", u"Alt+Right"},
    {"Parent Directory", u"親フォルダー", u"上级文件夹"},
    {"Go to the parent directory", u"親フォルダーへ移動", u"转到上级文件夹"},
    {"Alt+Up", u"Alt+Up", u"Alt+Up"},
    {"Create New Folder", u"新しいフォルダーを作成", u"新建文件夹"},
    {"Create a New Folder", u"新しいフォルダーを作成", u"新建文件夹"},
    {"&New Folder", u"新しいフォルダー(&N)", u"新建文件夹(&N)"},
    {"New Folder", u"新しいフォルダー", u"新建文件夹"},
    {"List View", u"一覧表示", u"列表视图"},
    {"Change to list view mode", u"一覧表示に切り替え", u"切换到列表视图"},
    {"Detail View", u"詳細表示", u"详细视图"},
    {"Change to detail view mode", u"詳細表示に切り替え", u"切换到详细视图"},
    {"Sidebar", u"サイドバー", u"侧边栏"},
    {"List of places and bookmarks", u"場所とブックマークの一覧", u"位置和书签列表"},
    {"Files", u"ファイル", u"文件"},
    {"File &name:", u"ファイル名(&N):", u"文件名(&N):"},
    {"Files of type:", u"ファイルの種類:", u"文件类型:"},
    {"Save As", u"名前を付けて保存", u"另存为"},
    {"Directory:", u"フォルダー:", u"文件夹:"},
    {"&Rename", u"名前の変更(&R)", u"重命名(&R)"},
    {"&Delete", u"削除(&D)", u"删除(&D)"},
    {"Show &hidden files", u"隠しファイルを表示(&H)", u"显示隐藏文件(&H)"},
    {"Recent Places", u"最近使った場所", u"最近的位置"},
    {"Remove", u"削除", u"移除"},
    {"Computer", u"コンピューター", u"计算机"},
    {"My Computer", u"コンピューター", u"我的电脑"},
    {"Drive", u"ドライブ", u"驱动器"},
    {"File", u"ファイル", u"文件"},
    {"Folder", u"フォルダー", u"文件夹"},
    {"File Folder", u"フォルダー", u"文件夹"},
    {"%1 File", u"%1 ファイル", u"%1 文件"},
    {"Name", u"名前", u"名称"},
    {"Size", u"サイズ", u"大小"},
    {"Type", u"種類", u"类型"},
    {"Kind", u"種類", u"类型"},
    {"Date Modified", u"更新日時", u"修改日期"},
    {"%1 already exists.\nDo you want to replace it?", u"%1 は既にあります。\n置き換えますか?",
     u"%1 已存在。\n要替换它吗？"},
    {"%1\nFile not found.\nPlease verify the correct file name was given.",
     u"%1\nファイルが見つかりません。\n名前を確かめてください。", u"%1\n找不到文件。\n请检查文件名。"},
    {"%1\nDirectory not found.\nPlease verify the correct directory name was given.",
     u"%1\nフォルダーが見つかりません。\n名前を確かめてください。", u"%1\n找不到文件夹。\n请检查文件夹名。"},
    {"'%1' is write protected.\nDo you want to delete it anyway?", u"「%1」は書き込み禁止です。\nそれでも削除しますか?",
     u"“%1”受写保护。\n仍要删除吗？"},
    {"Are you sure you want to delete '%1'?", u"「%1」を削除しますか?", u"确定要删除“%1”吗？"},
    {"Could not delete directory.", u"フォルダーを削除できませんでした。", u"无法删除文件夹。"},
    {"Invalid filename", u"使えない名前です", u"文件名无效"},
    {"<b>The name \"%1\" cannot be used.</b><p>Try using another name, with fewer characters or no punctuation marks.",
     u"<b>名前「%1」は使えません。</b><p>短い名前や記号のない名前にしてください。",
     u"<b>不能使用名称“%1”。</b><p>请使用更短或不含标点的名称。"},
    // Scroll bars.
    {"Scroll here", u"ここにスクロール", u"滚动到此处"},
    {"Left edge", u"左端", u"最左端"},
    {"Top", u"先頭", u"顶部"},
    {"Right edge", u"右端", u"最右端"},
    {"Bottom", u"末尾", u"底部"},
    {"Page left", u"1 ページ左へ", u"向左翻页"},
    {"Page up", u"1 ページ上へ", u"向上翻页"},
    {"Page right", u"1 ページ右へ", u"向右翻页"},
    {"Page down", u"1 ページ下へ", u"向下翻页"},
    {"Scroll left", u"左へスクロール", u"向左滚动"},
    {"Scroll up", u"上へスクロール", u"向上滚动"},
    {"Scroll right", u"右へスクロール", u"向右滚动"},
    {"Scroll down", u"下へスクロール", u"向下滚动"},
};

// The toolkit's classes alone are answered for, not the host's.
bool IsOfToolkit(std::string_view context)
{
    return context.size() > 1 && context[0] == 'Q' && context[1] >= 'A' && context[1] <= 'Z';
}

class CTranslator : public QTranslator {
public:
    explicit CTranslator(InterfaceLanguage language) : language_(language)
    {
        if (language != InterfaceLanguage::English) {
            has_catalogue_ = catalogue_.load(LocaleOf(language), QStringLiteral("qtbase"), QStringLiteral("_"),
                                             QLibraryInfo::path(QLibraryInfo::TranslationsPath));
        }
    }

    [[nodiscard]] bool isEmpty() const override { return false; }
    [[nodiscard]] QString translate(const char* context, const char* source, const char* disambiguation,
                                    int n) const override
    {
        if (context == nullptr || source == nullptr || !IsOfToolkit(context)) {
            return {};
        }
        if (language_ == InterfaceLanguage::English) {
            return FromWide(WidenText(source, utf8_code_page));
        }
        const QString known = has_catalogue_ ? catalogue_.translate(context, source, disambiguation, n) : QString();
        return known.isEmpty() ? FromTable(source) : known;
    }

private:
    [[nodiscard]] QString FromTable(std::string_view source) const
    {
        const auto* const row = std::ranges::find(toolkit_texts, source, &ToolkitText::source);
        if (row == std::end(toolkit_texts)) {
            return {};
        }
        return FromWide(language_ == InterfaceLanguage::Japanese ? row->japanese : row->chinese);
    }

    InterfaceLanguage language_;
    QTranslator catalogue_;
    bool has_catalogue_ = false;
};

int users = 0; // alive in this process
std::unique_ptr<CTranslator> translator;

} // namespace

CToolkitTexts::CToolkitTexts()
{
    if (users++ == 0) {
        translator = std::make_unique<CTranslator>(InterfaceLanguageOf(TheProcessValues().languageId));
        QCoreApplication::installTranslator(translator.get());
    }
}

CToolkitTexts::~CToolkitTexts()
{
    if (--users == 0) {
        translator.reset(); // and it takes itself out
    }
}

} // namespace partkeep
